// The title of a menu item as AppKit can align it: the times stand in a column, and what follows them, also on a second
// line, starts at a tab stop. Pure; any thread.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/menu.h"
#include "support/text.h"

namespace tollvane {

struct MenuTitle {
  AttributedText runs;  // a line feed and a tab begin the second line; other control characters are blanks
  std::string columnText =
      {};  // the text that must fit before the tab stop, in columnFont; empty: there is no tab stop
  Font columnFont = {};
};

// The first run is the column if its digits are equally wide and other runs follow.
inline MenuTitle menuTitle(const AttributedText& title) {
  const auto isBlank = [](char c) { return c == ' '; };
  MenuTitle made;
  const bool hasColumn = title.size() > 1 && title.front().font.family == FontFamily::monospacedDigits;
  for (std::size_t i = 0; i < title.size(); ++i) {
    TextRun run = title[i];
    const bool beginsLine = run.text.starts_with('\n') && std::all_of(run.text.begin() + 1, run.text.end(), isBlank);
    if (beginsLine) {
      if (hasColumn) run.text = "\n\t";
    } else {
      run.text = text::withoutControls(run.text);
    }
    if (i == 0 && hasColumn) {
      made.columnText = run.text;
      made.columnFont = run.font;
      run.text.erase(run.text.find_last_not_of(' ') + 1);
      run.text += '\t';
    }
    made.runs.push_back(std::move(run));
  }
  return made;
}

}  // namespace tollvane
