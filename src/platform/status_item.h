// The item that Tollvane shows in the desktop's status bar. Main thread only. All texts are plain text in UTF-8,
// whatever characters they contain.
//
//   const std::unique_ptr<StatusItem> item = bar.makeStatusItem();
//   item->setImage("bell", "Tollvane");
//   item->setToolTip("Last sound: Mail at 2:05:09 PM");
//   item->setMenu(delegate);  // a MenuDelegate, which fills the menu each time the user opens it
#pragma once

#include <memory>
#include <string_view>

#include "platform/menu.h"

namespace tollvane {

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  // Shows the symbol of this name ("bell", "bell.fill"), in the colour that the bar gives to its own symbols. If the
  // platform has no image of this name, the item shows no image.
  virtual void setImage(std::string_view symbolName, std::string_view accessibilityDescription) = 0;

  virtual void setToolTip(std::string_view text) = 0;

  // Attaches an empty menu, which `delegate` fills each time the user opens it. `delegate` must outlive the item.
  virtual void setMenu(MenuDelegate& delegate) = 0;
};

class StatusBar {
 public:
  virtual ~StatusBar() = default;

  // Makes an item of variable length, without image or tooltip. If the desktop has no status bar at the moment, the
  // item is shown as soon as a bar appears. Null only if the platform cannot make an item, which is a defect.
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace tollvane
