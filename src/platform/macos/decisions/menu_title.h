// The title of a menu item as AppKit can align it: the times stand in a column, and what follows them, also on a second
// line, starts at a tab stop. Pure; any thread.
#pragma once

#include <string>
#include <utility>

#include "platform/menu.h"
#include "support/text.h"

namespace tollvane {

struct MenuTitle {
  AttributedText runs;  // a line feed and a tab begin the second line; other control characters are blanks
  TextRun column = {};  // what must fit before the tab stop; without text, there is no tab stop
};

// The first run is the column if its digits are equally wide and other runs follow.
inline MenuTitle menuTitle(const AttributedText& title) {
  MenuTitle made;
  const bool hasColumn = title.size() > 1 && title.front().font.family == FontFamily::monospacedDigits;
  for (TextRun run : title) {
    if (!beginsLine(run)) {
      run.text = text::withoutControls(run.text);
    } else if (hasColumn) {
      run.text = "\n\t";
    }
    made.runs.push_back(std::move(run));
  }
  if (!hasColumn) return made;
  made.column = made.runs.front();
  std::string& time = made.runs.front().text;
  time.erase(time.find_last_not_of(' ') + 1);
  time += '\t';
  return made;
}

}  // namespace tollvane
