// Tollvane in GNOME Shell: its bell where nothing else shows it, its menu in the shell's own widgets, and a way for it
// to bring windows forward. While Tollvane does not run, this does nothing. It listens to the program that owns
// Tollvane's name on the session bus, and to no other. All texts that come from there are plain text, and are cut.

const VERSION = 1;
const TOLLVANE = 'com.quarnel.tollvane';
const WATCHER = 'org.kde.StatusNotifierWatcher'; // its owner shows the bell, so it must not be shown here
const BELL_PATH = '/com/quarnel/tollvane/bell';
const SHELL_PATH = '/com/quarnel/tollvane/shell';

const MOST_WINDOWS = 1000;
const REST = 700; // milliseconds until a tooltip appears

const BELL_INTERFACE = `<node><interface name="com.quarnel.tollvane.Bell">
  <method name="Attach"><arg type="u" direction="in"/><arg type="u" direction="out"/></method>
  <method name="Detach"/>
  <method name="State"><arg type="s" direction="out"/><arg type="s" direction="out"/></method>
  <method name="Menu"><arg type="s" direction="out"/></method>
  <method name="Choose"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
  <signal name="Changed"/>
  <signal name="ShowMenu"/>
</interface></node>`;

const SHELL_INTERFACE = `<node><interface name="com.quarnel.tollvane.Shell">
  <method name="Windows"><arg type="a(tusssb)" direction="out"/></method>
  <method name="Activate"><arg type="t" direction="in"/><arg type="b" direction="out"/></method>
</interface></node>`;

const BellProxy = Gio.DBusProxy.makeProxyWrapper(BELL_INTERFACE);

// How strongly texts are drawn on the menu, of 255. The shell's style sheets know no opacity.
const STRENGTHS = {secondary: 205, faint: 150};

function labelled(text, classes) {
  const label = new St.Label({text, y_align: Clutter.ActorAlign.CENTER});
  for (const each of classes)
    label.add_style_class_name(`tollvane-${each}`);
  label.opacity = Math.min(255, ...classes.map(each => STRENGTHS[each] ?? 255));
  return label;
}

// The text that appears when the pointer rests on an actor. Its timer runs only meanwhile.
class ToolTip {
  constructor() {
    this._timer = 0;
  }

  // `text` is asked when the tooltip appears.
  follow(actor, text) {
    actor.connect('notify::hover', () => actor.hover ? this._await(actor, text) : this._left(actor));
    actor.connect('destroy', () => this._left(actor));
  }

  hide() {
    if (this._timer)
      GLib.source_remove(this._timer);
    this._timer = 0;
    this._actor = null;
    this._label?.destroy();
    this._label = null;
  }

  _left(actor) {
    if (this._actor === actor)
      this.hide();
  }

  _await(actor, text) {
    this.hide();
    this._actor = actor;
    this._timer = GLib.timeout_add(GLib.PRIORITY_DEFAULT, REST, () => {
      this._timer = 0;
      if (text())
        this._show(text());
      return GLib.SOURCE_REMOVE;
    });
  }

  // Below the pointer, or above it at the bottom of the screen.
  _show(text) {
    this._label = new St.Label({text, style_class: 'dash-label tollvane-tip'});
    this._label.clutter_text.line_wrap = true;
    this._label.clutter_text.line_wrap_mode = Pango.WrapMode.WORD_CHAR;
    Main.uiGroup.add_child(this._label);
    const [x, y] = global.get_pointer();
    const [, , width, height] = this._label.get_preferred_size();
    const {x: left, y: top, width: room, height: depth} = Main.layoutManager.currentMonitor;
    const below = y + 24;
    this._label.set_position(Math.max(left, Math.min(x, left + room - width)),
      below + height <= top + depth ? below : Math.max(top, y - height - 8));
  }
}

// Puts a view that scrolls into the place of an actor, and the actor into it: where the screen is too small for a menu,
// the shell cuts it.
function scrolled(actor) {
  const parent = actor.get_parent();
  const view = new St.ScrollView({hscrollbar_policy: St.PolicyType.NEVER, overlay_scrollbars: true});
  parent.remove_child(actor);
  if (view.add_actor) // before GNOME Shell 46
    view.add_actor(actor);
  else
    view.set_child(actor);
  parent.add_child(view);
  return view;
}

const positionOf = view => view.vadjustment ?? view.vscroll.adjustment;

// Scrolls as far as it takes to show a row of `content`, which is in the view.
function scrollTo(view, content, row) {
  let top = 0;
  for (let each = row; each && each !== content; each = each.get_parent())
    top += each.get_allocation_box().y1;
  const position = positionOf(view);
  position.value = Math.max(Math.min(position.value, top), top + row.height - position.page_size);
}

// One sound or command: one line or two, and the keys at the end.
const Row = GObject.registerClass(
class TollvaneRow extends PopupMenu.PopupBaseMenuItem {
  _init(item, toolTip, choose) {
    super._init({reactive: item.isEnabled, can_focus: item.isEnabled});
    const lines = new St.BoxLayout({vertical: true, x_expand: true});
    for (const runs of item.lines) {
      const line = new St.BoxLayout({style_class: 'tollvane-line'});
      for (const run of runs)
        line.add_child(labelled(run.text, run.classes));
      lines.add_child(line);
    }
    this.add_child(lines);
    if (item.key)
      this.add_child(labelled(`Ctrl+${item.key.toUpperCase()}`, ['key', 'secondary']));
    this.accessible_name = item.name;
    toolTip.follow(this, () => item.toolTip);
    this.connect('activate', () => choose(item.id));
  }
});

const Bell = GObject.registerClass(
class TollvaneBell extends PanelMenu.Button {
  _init(link, icons) {
    super._init(0.5, 'Tollvane');
    this._link = link;
    this._icons = icons;
    this._icon = new St.Icon({style_class: 'system-status-icon'});
    this.add_child(this._icon);
    this._keys = new Map();
    this._toolTip = new ToolTip();
    this._toolTip.follow(this, () => this.menu.isOpen ? '' : this.accessible_name);
    this.connect('destroy', () => this._toolTip.hide());
    this.menu.actor.add_style_class_name('tollvane-menu');
    this._rows = new PopupMenu.PopupMenuSection();
    this.menu.addMenuItem(this._rows);
    this._scroll = scrolled(this._rows.actor);
    this.menu.connect('open-state-changed', (_menu, open) => {
      this._toolTip.hide();
      if (!open)
        return;
      positionOf(this._scroll).value = 0;
      this.fill();
    });
    this.menu.actor.connect('key-press-event', (_actor, event) => this._pressed(event));
    // Until the first items come, which is when it opens.
    this._fillWith('[{"enabled": false, "lines": [[{"text": "No sounds yet"}]]}]');
    this.show_state('bell', 'Tollvane');
    this.fill();
  }

  // The shell ends only what is directly in its menu.
  destroy() {
    this._rows.destroy();
    super.destroy();
  }

  show_state(symbol, toolTip) {
    const name = symbol === 'bell.fill' ? 'tollvane-bell-fill-symbolic' : 'tollvane-bell-symbolic';
    this._icon.gicon = Gio.icon_new_for_string(`${this._icons}/${name}.svg`);
    this.accessible_name = shortened(toolTip);
  }

  fill() {
    this._link.menu(text => this._fillWith(text));
  }

  _fillWith(text) {
    if (text === this._shown)
      return;
    const items = menuFrom(text);
    if (items.length === 0)
      return;
    this._shown = text;
    this._rows.removeAll();
    this._keys.clear();
    for (const item of items)
      this._add(item);
  }

  _add(item) {
    const choose = id => this._link.choose(id);
    const rowOf = each => each.isSeparator ? new PopupMenu.PopupSeparatorMenuItem() :
      new Row(each, this._toolTip, choose);
    const add = (menu, row) => {
      menu.addMenuItem(row);
      row.connect('key-focus-in', () => scrollTo(this._scroll, this._rows.actor, row));
    };
    if (item.items.length === 0) {
      add(this._rows, rowOf(item));
      if (item.key)
        this._keys.set(item.key, item.id);
      return;
    }
    // Most of the sounds are in the submenu, and most people do not open it. An empty one would not open.
    const below = new PopupMenu.PopupSubMenuMenuItem(item.name, false);
    add(this._rows, below);
    const {menu} = below;
    menu._needsScrollbar = () => false; // the whole menu scrolls
    const [first, ...others] = item.items;
    add(menu, rowOf(first));
    menu.connect('open-state-changed', (_menu, open) => {
      for (const each of open ? others.splice(0) : [])
        add(menu, rowOf(each));
    });
  }

  _pressed(event) {
    const isCommand = event.get_state() & Clutter.ModifierType.CONTROL_MASK;
    const pressed = String.fromCodePoint(Clutter.keysym_to_unicode(event.get_key_symbol())).toLowerCase();
    const id = isCommand ? this._keys.get(pressed) : undefined;
    if (id === undefined)
      return Clutter.EVENT_PROPAGATE;
    this.menu.close();
    this._link.choose(id);
    return Clutter.EVENT_STOP;
  }
});

// What Tollvane may ask of the shell.
class Windows {
  constructor(isTollvane) {
    this._isTollvane = isTollvane;
    this._object = Gio.DBusExportedObject.wrapJSObject(SHELL_INTERFACE, this);
    this._object.export(Gio.DBus.session, SHELL_PATH);
  }

  destroy() {
    this._object.unexport();
    this._object.run_dispose();
  }

  _all() {
    return global.get_window_actors().map(actor => actor.meta_window)
      .filter(window => !window.is_override_redirect() && !window.is_skip_taskbar());
  }

  _guarded(invocation, answer) {
    if (this._isTollvane(invocation.get_sender()))
      invocation.return_value(answer());
    else
      invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', 'This is for Tollvane only.');
  }

  WindowsAsync(_parameters, invocation) {
    this._guarded(invocation, () => {
      const found = this._all().slice(-MOST_WINDOWS).map(window => [
        window.get_id(), Math.max(0, window.get_pid()), shortened(window.get_title() ?? ''),
        shortened(window.get_wm_class() ?? ''), shortened(window.get_gtk_application_id?.() ?? ''),
        window === global.display.focus_window]);
      return new GLib.Variant('(a(tusssb))', [found]);
    });
  }

  ActivateAsync([id], invocation) {
    this._guarded(invocation, () => {
      const window = this._all().find(each => each.get_id() === Number(id));
      if (window)
        Main.activateWindow(window);
      return new GLib.Variant('(b)', [Boolean(window) && global.display.focus_window === window]);
    });
  }
}

// The link to Tollvane: comes and goes with the owner of its name.
class Link {
  constructor(icons) {
    this._icons = icons;
    this._owner = null;
    this._hasOtherBell = false;
    this._windows = new Windows(sender => sender === this._owner);
    this._watches = [
      Gio.bus_watch_name(Gio.BusType.SESSION, WATCHER, Gio.BusNameWatcherFlags.NONE,
        () => this._otherBell(true), () => this._otherBell(false)),
      Gio.bus_watch_name(Gio.BusType.SESSION, TOLLVANE, Gio.BusNameWatcherFlags.NONE,
        (_bus, _name, owner) => this._appeared(owner), () => this._vanished()),
    ];
  }

  destroy() {
    for (const watch of this._watches)
      Gio.bus_unwatch_name(watch);
    this._proxy?.DetachRemote(() => {}); // an older Tollvane does not know it
    this._vanished();
    this._windows.destroy();
  }

  _otherBell(there) {
    this._hasOtherBell = there;
    this._showBell();
  }

  _appeared(owner) {
    this._vanished();
    this._owner = owner;
    const cancel = this._cancel = new Gio.Cancellable();
    new BellProxy(Gio.DBus.session, owner, BELL_PATH, (proxy, error) => {
      if (error || cancel.is_cancelled())
        return;
      proxy.AttachRemote(VERSION, (answer, failure) => {
        this._settled = true; // tests wait for this, to see that nothing follows
        // An older Tollvane knows nothing of this, and a newer one may want another version.
        if (failure || answer[0] !== VERSION || cancel.is_cancelled())
          return;
        this._proxy = proxy;
        this._signals = [
          proxy.connectSignal('Changed', () => this._update()),
          proxy.connectSignal('ShowMenu', () => this.bell?.menu.toggle()),
        ];
        this._showBell();
      });
    }, cancel, Gio.DBusProxyFlags.DO_NOT_AUTO_START | Gio.DBusProxyFlags.DO_NOT_LOAD_PROPERTIES);
  }

  _vanished() {
    this._owner = null;
    this._cancel?.cancel();
    this._cancel = null;
    for (const signal of this._proxy ? this._signals : [])
      this._proxy.disconnectSignal(signal);
    this._proxy = null;
    this._showBell();
  }

  _showBell() {
    const wanted = Boolean(this._proxy) && !this._hasOtherBell;
    if (wanted && !this.bell) {
      this.bell = new Bell(this, this._icons);
      Main.panel.addToStatusArea('tollvane', this.bell);
      this._update();
    } else if (!wanted && this.bell) {
      this.bell.destroy();
      this.bell = null;
    }
  }

  _update() {
    this._proxy?.StateRemote(([symbol, toolTip], error) => {
      if (!error)
        this.bell?.show_state(symbol, toolTip);
    });
  }

  menu(use) {
    this._proxy?.MenuRemote(([text], error) => {
      if (!error && this.bell)
        use(text);
    });
  }

  choose(id) {
    // The token is the user's permission for a window to come forward.
    const info = Gio.AppInfo.create_from_commandline('Tollvane', 'Tollvane',
      Gio.AppInfoCreateFlags.SUPPORTS_STARTUP_NOTIFICATION);
    const token = global.create_app_launch_context(0, -1).get_startup_notify_id(info, []);
    this._proxy?.ChooseRemote(id, token ?? '');
  }
}
