#include "bridge/message_kind.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

namespace tollvane::bridge {
namespace {

using nlohmann::json;

// If several members are called "type", the last one counts, as it does for the other readers of these messages.
class TypeReader : public nlohmann::json_sax<json> {
 public:
  bool hello() const { return hello_; }

  bool null() override { return value(); }
  bool boolean(bool) override { return value(); }
  bool number_integer(number_integer_t) override { return value(); }
  bool number_unsigned(number_unsigned_t) override { return value(); }
  bool number_float(number_float_t, const string_t&) override { return value(); }
  bool string(string_t& text) override { return value(text == "hello"); }
  bool binary(binary_t&) override { return value(); }
  bool key(string_t& name) override {
    isType_ = depth_ == 1 && name == "type";
    return true;
  }
  bool start_object(std::size_t) override { return begin(); }
  bool start_array(std::size_t) override { return begin(); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }
  bool parse_error(std::size_t, const std::string&, const json::exception&) override { return false; }

 private:
  bool value(bool isHello = false) {
    if (depth_ == 1 && isType_) hello_ = isHello;
    return true;
  }
  bool begin() {
    value();
    ++depth_;
    return true;
  }
  bool end() {
    --depth_;
    return true;
  }

  std::size_t depth_ = 0;
  bool isType_ = false;
  bool hello_ = false;
};

// The text must begin with an object: no other value, no byte order mark. This cheap check saves parsing much of what
// is malformed.
bool beginsAsObject(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '{';
}

// The parser would take a zero byte for the end of the text and ignore everything behind it.
bool hasZeroByte(std::string_view text) { return text.find('\0') != std::string_view::npos; }

}  // namespace

MessageKind kindOf(std::string_view text) {
  TypeReader reader;
  if (!beginsAsObject(text) || hasZeroByte(text) || !json::sax_parse(text, &reader)) return MessageKind::malformed;
  return reader.hello() ? MessageKind::hello : MessageKind::other;
}

}  // namespace tollvane::bridge
