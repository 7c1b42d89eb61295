#include "platform/linux/windows/accessible_form.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "platform/linux/windows/form_group.h"
#include "platform/linux/windows/settings_window.h"

namespace tollvane {
namespace {

QAccessibleInterface* interfaceFor(const QString&, QObject* object) {
  if (auto* page = dynamic_cast<SettingsPage*>(object))
    return new QAccessibleWidget(page, QAccessible::Window, page->windowTitle());
  if (auto* group = dynamic_cast<FormGroup*>(object)) return new QAccessibleWidget(group, QAccessible::Grouping);
  return nullptr;
}

}  // namespace

void describeFormsToAccessibility() {
  [[maybe_unused]] static const bool installed = [] {
    QAccessible::installFactory(interfaceFor);
    return true;
  }();
}

}  // namespace tollvane
