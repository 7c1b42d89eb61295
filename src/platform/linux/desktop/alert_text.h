// Texts from outside as an alert draws them. Pure functions; any thread.
#pragma once

#include <QString>
#include <cstddef>
#include <string_view>

namespace tollvane {

// One line of plain text out of UTF-8: control characters become blanks, bidirectional controls are dropped. What has
// more than `most` user-perceived characters loses some in the middle, for an ellipsis: a sentence keeps its end.
QString alertText(std::string_view text, qsizetype most);

// The same with places where a line may end in words that are too long for any line. They take no room.
QString breakable(const QString& line);

}  // namespace tollvane
