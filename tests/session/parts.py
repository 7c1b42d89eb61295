"""The parts of a session: how each is started, and how to tell that it is ready."""

import os
import pathlib
import shutil
import socket
import wave

from bus import BusError

BUS = '''<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>{address}</listen>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
'''

WATCHER = ('org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher')
PANEL_SETTINGS = pathlib.Path(__file__).resolve().parent / 'xfce4-panel.xml'
BACKGROUND = '#4f6272'
DEFAULT_SIZE = (800, 480)


class Failure(Exception):
    """A failure, described in one sentence for the user of private_session."""


def accepts(path):
    """Whether a program listens on this socket. The file of a socket exists before that."""
    with socket.socket(socket.AF_UNIX) as probe:
        return probe.connect_ex(str(path)) == 0


def has_host(session):
    try:
        return session.bus.get(*WATCHER, 'IsStatusNotifierHostRegistered')
    except BusError:
        return False  # there is no watcher yet


class MessageBus:
    title = 'the session bus (dbus-daemon)'

    @staticmethod
    def start(session):
        configuration = session.write(session.root / 'settings/bus.conf', BUS.format(
            address=session.environment['DBUS_SESSION_BUS_ADDRESS'], services=session.run / 'dbus-1/services'))
        process = session.launch('bus', ['dbus-daemon', '--nofork', '--nopidfile', f'--config-file={configuration}'],
                                 'bus')
        session.await_part(MessageBus.title, 'bus', process, lambda: accepts(session.run / 'bus'))


class PipeWire:
    title = 'the sound server (PipeWire with WirePlumber)'

    @staticmethod
    def start(session):
        server = session.launch('pipewire', ['pipewire'], 'pipewire')
        session.await_part('PipeWire', 'pipewire', server, lambda: accepts(session.run / 'pipewire-0'))
        PipeWire._leave_bluetooth_alone(session)
        manager = session.launch('wireplumber', ['wireplumber'], 'pipewire')
        # pipewire-pulse gives up if a player makes this directory at the same moment.
        session.make_directory(session.run / 'pulse')
        session.launch('pipewire-pulse', ['pipewire-pulse'], 'pipewire')
        silence = silent_file(session)
        session.await_part(PipeWire.title, 'wireplumber', manager,
                           lambda: session.output('pactl', 'list', 'short', 'sinks').strip())
        # An output that is listed may still hang, so play to it.
        session.await_part(PipeWire.title, 'wireplumber', manager,
                           lambda: session.succeeds('pw-play', silence) and session.succeeds('paplay', silence))

    @staticmethod
    def _leave_bluetooth_alone(session):
        """For Bluetooth, WirePlumber asks a login service, and ends if there is no such service."""
        settings = session.home / '.config/wireplumber'
        # WirePlumber 0.4 reads settings in Lua, 0.5 and later in PipeWire's format. Each ignores the other's file.
        session.write(settings / 'bluetooth.lua.d/51-no-bluetooth.lua', 'bluez_monitor.enabled = false\n')
        session.write(settings / 'wireplumber.conf.d/no-bluetooth.conf', 'wireplumber.profiles = {\n  main = {\n'
                      '    hardware.bluetooth = disabled\n  }\n}\n')


class PulseAudio:
    title = 'the sound server (PulseAudio)'

    @staticmethod
    def start(session):
        environment, program, modules = dict(session.environment), 'pulseaudio', []
        if session.options.pulseaudio:
            installation = pathlib.Path(session.options.pulseaudio)
            program = str(installation / 'usr/bin/pulseaudio')
            own = sorted({file.parent for pattern in ('lib*.so*', 'module-null-sink.so')
                          for file in installation.glob(f'usr/lib/**/{pattern}')})
            environment['LD_LIBRARY_PATH'] = ':'.join(map(str, own))
            modules = [f'--dl-search-path={file.parent}'
                       for file in installation.glob('usr/lib/**/module-null-sink.so')]
        process = session.launch(
            'pulseaudio', [program, '--daemonize=no', '-n', '--exit-idle-time=-1', '--use-pid-file=no', *modules,
                           '-L', 'module-native-protocol-unix auth-anonymous=1', '-L',
                           'module-null-sink sink_name=null norewinds=1'], 'pulseaudio', env=environment)
        session.await_part(PulseAudio.title, 'pulseaudio', process, lambda: session.succeeds('pactl', 'info'))


class Screen:
    title = 'the X server (Xvfb)'

    @staticmethod
    def start(session):
        scale = session.options.scale
        width, height = session.options.screen or DEFAULT_SIZE
        reader, writer = os.pipe()
        # Without -noreset the server would reset when its first client leaves.
        process = session.launch(
            'screen', ['Xvfb', '-displayfd', str(writer), '-screen', '0', f'{width * scale}x{height * scale}x24',
                       '-nolisten', 'tcp', '-noreset'], 'screen', pass_fds=(writer,))
        os.close(writer)
        os.set_blocking(reader, False)
        with os.fdopen(reader, 'rb', buffering=0) as answer:
            number = b''

            def is_known():
                nonlocal number
                number += answer.read() or b''
                return number.endswith(b'\n')

            session.await_part(Screen.title, 'screen', process, is_known)
        session.environment.update(DISPLAY=f':{number.decode().strip()}', XDG_CURRENT_DESKTOP='XFCE')
        session.environment.pop('QT_QPA_PLATFORM', None)
        if scale > 1:
            session.environment['GDK_SCALE'] = str(scale)
        session.succeeds('xsetroot', '-solid', BACKGROUND)


class WindowManager:
    title = 'the window manager (openbox)'

    @staticmethod
    def start(session):
        # openbox announces itself too early: it may never manage a window that is mapped while it starts.
        process = session.launch('window-manager', ['openbox', '--sm-disable', '--startup', 'echo ready'],
                                 'window-manager')
        session.await_part(WindowManager.title, 'window-manager', process,
                           lambda: 'ready' in session.said('window-manager').splitlines())


class Panel:
    title = 'the panel (xfce4-panel)'
    name_on_bus = WATCHER[0]

    @staticmethod
    def start(session):
        if not session.bus.has('org.xfce.Xfconf'):
            is_dark = 'true' if session.tone == 'dark' else 'false'
            session.write(session.home / '.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml',
                          PANEL_SETTINGS.read_text().replace('@DARK_MODE@', is_dark))
            session.start_service('org.xfce.Xfconf')
        process = session.launch('panel', ['xfce4-panel', '--disable-wm-check'], 'panel')
        session.await_part(Panel.title, 'panel', process, lambda: has_host(session))

    @staticmethod
    def change_tone(session):
        is_dark = 'true' if session.tone == 'dark' else 'false'
        if not session.succeeds('xfconf-query', '-c', 'xfce4-panel', '-p', '/panels/dark-mode', '-s', is_dark):
            raise Failure("the panel's tone could not be changed")


class Sway:
    title = 'the compositor (sway)'

    @staticmethod
    def start(session):
        scale = session.options.scale
        width, height = session.options.screen or DEFAULT_SIZE
        configuration = session.write(
            session.root / 'settings/sway',
            f'output HEADLESS-1 resolution {width * scale}x{height * scale} scale {scale} '
            f'background {BACKGROUND} solid_color\nxwayland disable\n')
        session.environment.update(
            XDG_CURRENT_DESKTOP='sway', WLR_BACKENDS='headless', WLR_LIBINPUT_NO_DEVICES='1', WLR_RENDERER='pixman',
            QT_WAYLAND_CLIENT_BUFFER_INTEGRATION='none')
        process = session.launch('wayland', ['sway', '-c', str(configuration)], 'wayland')

        def found(pattern):
            return next((file for file in session.run.glob(pattern) if accepts(file)), None)

        session.await_part(Sway.title, 'wayland', process,
                           lambda: found('wayland-*[0-9]') and found('sway-ipc.*'))
        session.environment.update(
            WAYLAND_DISPLAY=found('wayland-*[0-9]').name, SWAYSOCK=str(found('sway-ipc.*')), QT_QPA_PLATFORM='wayland',
            GDK_BACKEND='wayland')


class Labwc:
    title = 'the compositor (labwc)'

    @staticmethod
    def start(session):
        session.environment.update(
            XDG_CURRENT_DESKTOP='labwc:wlroots', WLR_BACKENDS='headless', WLR_LIBINPUT_NO_DEVICES='1',
            WLR_RENDERER='pixman', QT_WAYLAND_CLIENT_BUFFER_INTEGRATION='none')
        process = session.launch('wayland', ['labwc'], 'wayland')
        session.await_part(Labwc.title, 'wayland', process, lambda: accepts(session.run / 'wayland-0'))
        session.environment.update(WAYLAND_DISPLAY='wayland-0', QT_QPA_PLATFORM='wayland', GDK_BACKEND='wayland')


class KWin:
    title = 'the compositor (kwin_wayland)'

    @staticmethod
    def start(session):
        width, height = session.options.screen or DEFAULT_SIZE
        session.environment.update(XDG_CURRENT_DESKTOP='KDE', LIBGL_ALWAYS_SOFTWARE='1',
                                   QT_WAYLAND_CLIENT_BUFFER_INTEGRATION='none')
        process = session.launch('wayland', ['kwin_wayland', '--virtual', '--width', str(width), '--height',
                                             str(height), '--socket', 'wayland-0', '--no-lockscreen'], 'wayland',
                                 env={**session.environment, 'QT_QPA_PLATFORM': ''})
        session.await_part(KWin.title, 'wayland', process,
                           lambda: accepts(session.run / 'wayland-0') and session.bus.has('org.kde.KWin'))
        session.environment.update(WAYLAND_DISPLAY='wayland-0', QT_QPA_PLATFORM='wayland', GDK_BACKEND='wayland')


class GnomeShell:
    title = 'the shell (gnome-shell)'
    SHELL = ('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell')

    @staticmethod
    def start(session):
        width, height = session.options.screen or DEFAULT_SIZE
        system_bus = session.run / 'system-bus'
        configuration = session.write(session.root / 'settings/system-bus.conf',
                                      BUS.format(address=f'unix:path={system_bus}', services='/nonexistent'))
        bus = session.launch('system-bus', ['dbus-daemon', '--nofork', '--nopidfile',
                                            f'--config-file={configuration}'])
        session.keep(bus)
        session.await_part('the system bus', 'system-bus', bus, lambda: accepts(system_bus))
        extensions = ', '.join(f"'{GnomeShell._provided(session, each)}'" for each in session.options.extension)
        session.write(session.home / '.config/glib-2.0/settings/keyfile',
                      f"[org/gnome/shell]\nenabled-extensions=[{extensions}]\n"
                      "welcome-dialog-last-shown-version='999'\n")
        session.environment.update(
            XDG_CURRENT_DESKTOP='GNOME', LIBGL_ALWAYS_SOFTWARE='1', GSETTINGS_BACKEND='keyfile',
            QT_WAYLAND_CLIENT_BUFFER_INTEGRATION='none', DBUS_SYSTEM_BUS_ADDRESS=f'unix:path={system_bus}')
        process = session.launch('wayland', ['gnome-shell', '--unsafe-mode', '--headless', '--wayland', '--no-x11',
                                             '--virtual-monitor', f'{width}x{height}'], 'wayland')
        session.await_part(GnomeShell.title, 'wayland', process, lambda: GnomeShell._is_up(session))
        session.environment.update(WAYLAND_DISPLAY='wayland-0', QT_QPA_PLATFORM='wayland', GDK_BACKEND='wayland')

    @staticmethod
    def _provided(session, extension):
        """The extension's UUID. One that is given as a folder is copied to where the shell looks for it."""
        folder = pathlib.Path(extension)
        if '/' in extension:
            for file in folder.iterdir():
                target = session.home / '.local/share/gnome-shell/extensions' / folder.name / file.name
                session.make_directory(target.parent)
                shutil.copy(file, target)
                session.own(target)
        return folder.name

    @staticmethod
    def _is_up(session):
        """It starts with its overview, which covers the windows. Hidden too early, the start would never end."""
        if not accepts(session.run / 'wayland-0'):
            return False
        try:
            script = '!Main.layoutManager._startingUp && (Main.overview.hide(), !Main.overview.visible)'
            return session.bus.call(*GnomeShell.SHELL, 'Eval', 's', script) == [True, 'true']
        except BusError:
            return False


class Wayland:
    """The compositor that the session was asked for."""
    title = 'the compositor'
    KINDS = {'sway': Sway, 'labwc': Labwc, 'kwin': KWin, 'gnome': GnomeShell}

    @staticmethod
    def start(session):
        Wayland.KINDS[session.options.wayland].start(session)


class Bar:
    title = 'the bar (waybar)'
    name_on_bus = WATCHER[0]
    COLOURS = {'dark': ('#2b2b2b', '#f2f2f2'), 'light': ('#f6f5f4', '#2e3436')}

    @staticmethod
    def start(session):
        settings = session.home / '.config/waybar'
        session.write(settings / 'config', '{"layer": "top", "position": "top", "height": 26, '
                                           '"modules-right": ["tray"], "tray": {"spacing": 8}}')
        Bar.change_tone(session)
        process = session.launch('bar', ['waybar'], 'bar')
        session.await_part(Bar.title, 'bar', process, lambda: has_host(session))

    @staticmethod
    def change_tone(session):
        back, front = Bar.COLOURS[session.tone]
        session.write(session.home / '.config/waybar/style.css',
                      f'* {{ font-family: sans-serif; }} window#waybar {{ background: {back}; color: {front}; }} '
                      '#tray { padding: 0 8px; }')


class Notifications:
    title = 'the notification service (dunst)'
    name_on_bus = 'org.freedesktop.Notifications'

    @staticmethod
    def start(session, program=None):
        rule = f'[each]\n    summary = "*"\n    script = "{program}"\n' if program else ''
        configuration = session.write(
            session.root / 'settings/dunstrc',
            f'[global]\n    origin = bottom-left\n    timeout = 2\n    notification_limit = 5\n{rule}')
        process = session.launch('notifications', ['dunst', '-conf', str(configuration)], 'notifications')
        session.await_part(Notifications.title, 'notifications', process,
                           lambda: session.bus.has(Notifications.name_on_bus))


PARTS = {
    'bus': MessageBus,
    'pipewire': PipeWire,
    'pulseaudio': PulseAudio,
    'screen': Screen,
    'window-manager': WindowManager,
    'panel': Panel,
    'wayland': Wayland,
    'bar': Bar,
    'notifications': Notifications,
}


def silent_file(session):
    path = session.root / 'silence.wav'
    with wave.open(str(path), 'wb') as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(48000)
        file.writeframes(bytes(960))
    session.own(path)
    return str(path)
