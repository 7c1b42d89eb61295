// What the bridge must know about a message: whether it is valid, and whether it is the extension's "hello". Pure; any
// thread. The text is read event by event (nlohmann-json's SAX interface), so no tree of it is built, and the cost is
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
