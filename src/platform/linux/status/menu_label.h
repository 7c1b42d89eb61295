// A menu item's title for bars that draw the menu themselves and know nothing but one line of plain text. Pure.
#pragma once

#include <QString>

#include "platform/menu.h"

namespace tollvane {

// "3:07:42 PM  Firefox · notification sound — Tab: Inbox": what stands first is told apart from what follows by a dot,
// a second line by a dash. Underscores are doubled: a single one would underline the next character.
QString menuLabel(const MenuItem& item);

}  // namespace tollvane
