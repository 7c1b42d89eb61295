// What the bridge must know of a message: whether it is one, and whether it is the extension's introduction. Pure; any
// thread. Reads the text event by event (nlohmann-json's SAX), so no tree of the message is ever built, and the cost is
// linear in its length.
#pragma once

#include <string_view>

namespace tollvane::bridge {

enum class MessageKind {
  malformed,  // not exactly one JSON object (RFC 8259) in UTF-8
  hello,      // its "type" is "hello"
  other,
};

MessageKind kindOf(std::string_view text);

}  // namespace tollvane::bridge
