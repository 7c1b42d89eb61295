// The one thing that Tollvane shows all day: an item in the desktop's status bar.
// Main thread only. All texts are plain text in UTF-8, whatever characters they hold.
#pragma once

#include <memory>
#include <string_view>

#include "platform/menu.h"

namespace tollvane {

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  // Shows the symbol of that name ("bell", "bell.fill"), tinted by the bar as it tints its own symbols. A name that
  // the platform has no image for leaves the item without an image.
  virtual void setImage(std::string_view symbolName, std::string_view accessibilityDescription) = 0;

  virtual void setToolTip(std::string_view text) = 0;

  // Attaches an empty menu, which the delegate fills each time that the user opens it. The delegate outlives the item.
  virtual void setMenu(MenuDelegate& delegate) = 0;
};

class StatusBar {
 public:
  virtual ~StatusBar() = default;

  // A new item of variable length, without image or tooltip. Null only when the platform cannot make one, which is a
  // defect; a desktop that has no status bar at the moment still gets an item, shown as soon as a bar appears.
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace tollvane
