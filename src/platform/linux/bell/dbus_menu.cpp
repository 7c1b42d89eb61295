#include "platform/linux/bell/dbus_menu.h"

#include <chrono>
#include <utility>

namespace tollvane {
namespace {

// A bar may never say that the menu was closed. After this time, the menu counts as closed.
constexpr std::chrono::seconds longestLook{60};

// Some bars ask for the menu that they are about to show, and then do not show it. If a bar does not say within this
// time that it has, the menu counts as closed.
constexpr std::chrono::seconds longestOpening{3};

}  // namespace

DBusMenu::DBusMenu(MenuDelegate& delegate, std::function<void()> onChoice)
    : delegate_(delegate), onChoice_(std::move(onChoice)) {
  registerBusTypes();
  openTooLong_.setSingleShot(true);
  connect(&openTooLong_, &QTimer::timeout, this, [this] { setClosed(); });
  // Several changes in a row are sent as one.
  change_.setSingleShot(true);
  change_.setInterval(0);
  connect(&change_, &QTimer::timeout, this, [this] {
    if (!open_) rebuild();
  });
}

void DBusMenu::contentsMayHaveChanged() {
  if (revision_ > 0) change_.start();
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, DBusMenuLayout& layout) {
  if (revision_ == 0) {
    rebuild();
    revision_ = 1;
  }
  const DBusMenuLayout* found = shown_.find(parentId);
  if (found == nullptr) {
    refuse(parentId);
    return 0;
  }
  layout = excerpt(*found, recursionDepth, propertyNames);
  return revision_;
}

DBusMenuPropertiesList DBusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
  DBusMenuPropertiesList result;
  const auto add = [&](const DBusMenuLayout& layout) {
    result.append({layout.id, excerpt(layout.properties, propertyNames)});
  };
  for (const int id : ids) {
    if (const DBusMenuLayout* found = shown_.find(id)) add(*found);
  }
  if (ids.isEmpty()) {  // that means all items
    for (const DBusMenuLayout& item : shown_.find(0)->children) {
      add(item);
      for (const DBusMenuLayout& below : item.children) add(below);
    }
  }
  return result;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name) {
  const DBusMenuLayout* found = shown_.find(id);
  const QVariant value = found == nullptr ? QVariant() : found->properties.value(name, defaultMenuProperty(name));
  if (value.isValid()) return QDBusVariant(value);
  if (found == nullptr) {
    refuse(id);
  } else if (calledFromDBus()) {
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("A menu item has no property of that name."));
  }
  return QDBusVariant(QString());
}

void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
  if (!obey(id, eventId)) refuse(id);
}

QList<int> DBusMenu::EventGroup(const DBusMenuEvents& events) {
  QList<int> unknown;
  for (const DBusMenuEvent& event : events) {
    if (!obey(event.id, event.name)) unknown.append(event.id);
  }
  // The protocol wants an error only if none of the events could be handled.
  if (!unknown.isEmpty() && unknown.size() == events.size()) refuse(unknown.first());
  return unknown;
}

bool DBusMenu::AboutToShow(int id) {
  if (id == 0) {
    // A menu that was open before must be closed by now. From here on nothing moves under the pointer.
    const bool changed = rebuild();
    setOpen(longestOpening);
    return changed;
  }
  if (!knows(id)) refuse(id);
  return false;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
  QList<int> changed;
  for (const int id : ids) {
    if (!knows(id)) {
      idErrors.append(id);
    } else if (id == 0 && AboutToShow(0)) {
      changed.append(0);
    }
  }
  if (!idErrors.isEmpty() && idErrors.size() == ids.size()) refuse(idErrors.first());
  return changed;
}

void DBusMenu::refuse(int id) {
  if (calledFromDBus()) sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no menu item %1.").arg(id));
}

// False if there is no such item.
bool DBusMenu::obey(int id, const QString& eventId) {
  if (!knows(id)) return false;
  if (eventId == QLatin1String("clicked")) choose(id);
  if (id == 0 && eventId == QLatin1String("opened")) setOpen(longestLook);
  if (id == 0 && eventId == QLatin1String("closed")) setClosed();
  return true;
}

void DBusMenu::choose(int id) {
  const MenuItem* item = shown_.item(id);
  if (item == nullptr) item = before_.item(id);
  if (item == nullptr || !item->isEnabled || !item->action) return;
  setClosed();
  // The action runs from the event loop, so that the bar does not wait for it. `item` is copied, because the menu may
  // have changed by then.
  QMetaObject::invokeMethod(
      this,
      [this, chosen = *item] {
        if (onChoice_) onChoice_();
        chosen.action(chosen);
      },
      Qt::QueuedConnection);
}

// Returns whether the menu has changed.
bool DBusMenu::rebuild() {
  change_.stop();
  Menu menu;
  delegate_.menuNeedsUpdate(menu);
  ExportedMenu made(menu, numbers_);
  if (made.hasSameLayout(shown_)) return false;
  before_ = std::move(shown_);
  shown_ = std::move(made);
  if (revision_ == 0) return true;
  // Some bars read the properties of an item that stays only if they are told of each.
  const auto [updated, removed] = shown_.changesSince(before_);
  if (!updated.isEmpty() || !removed.isEmpty()) Q_EMIT ItemsPropertiesUpdated(updated, removed);
  Q_EMIT LayoutUpdated(++revision_, 0);
  return true;
}

void DBusMenu::setOpen(std::chrono::seconds longest) {
  open_ = true;
  openTooLong_.start(longest);
}

void DBusMenu::setClosed() {
  openTooLong_.stop();
  if (std::exchange(open_, false)) contentsMayHaveChanged();
}

}  // namespace tollvane
