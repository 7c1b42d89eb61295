#include "platform/linux/x11/xsettings.h"

#include <cstdint>
#include <vector>

namespace tollvane {
namespace {

constexpr std::chrono::milliseconds settingsPatience{100};
constexpr std::uint32_t longestProperty = 64 * 1024;  // words

// Reads a value after the other; after the end everything is 0 or empty, and isGood() is false.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {
    bigEndian_ = number(1) == 1;
    skip(3);
  }

  bool isGood() const { return good_; }

  std::uint32_t number(std::size_t size) {
    const std::string_view raw = take(size);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < raw.size(); ++i) {
      const auto byte = static_cast<std::uint32_t>(static_cast<std::uint8_t>(raw[i]));
      value |= byte << (8 * (bigEndian_ ? raw.size() - 1 - i : i));
    }
    return value;
  }

  // With the bytes that fill it up to a multiple of four.
  std::string_view text(std::size_t size) {
    const std::string_view text = take(size);
    skip((4 - size % 4) % 4);
    return text;
  }

  void skip(std::size_t size) { take(size); }

 private:
  std::string_view take(std::size_t size) {
    good_ = good_ && size <= bytes_.size();
    if (!good_) return {};
    const std::string_view taken = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return taken;
  }

  std::string_view bytes_;
  bool bigEndian_ = false;
  bool good_ = true;
};

enum Kind : std::uint32_t { integer = 0, string = 1, color = 2 };

}  // namespace

XSettings parseXSettings(std::string_view bytes) {
  Reader reader(bytes);
  reader.skip(4);  // the serial number
  XSettings settings;
  const std::uint32_t count = reader.number(4);
  for (std::uint32_t i = 0; i < count && reader.isGood(); ++i) {
    const std::uint32_t kind = reader.number(1);
    reader.skip(1);
    const std::string_view name = reader.text(reader.number(2));
    reader.skip(4);  // when it was changed
    if (kind == integer) {
      reader.skip(4);
    } else if (kind == color) {
      reader.skip(8);
    } else if (kind == string) {
      const std::string_view value = reader.text(reader.number(4));
      if (name == "Gtk/FontName") settings.fontName = value;
      if (name == "Net/ThemeName") settings.themeName = value;
    } else {
      break;
    }
  }
  return settings;
}

bool XSettingsWatch::findAtoms() {
  if (manager_ != XCB_ATOM_NONE) return true;
  const std::string selection = "_XSETTINGS_S" + std::to_string(x11_.screenNumber());
  const auto atoms = x11_.atoms({selection, "_XSETTINGS_SETTINGS", "MANAGER"});
  selection_ = atoms[0];
  property_ = atoms[1];
  manager_ = atoms[2];
  return manager_ != XCB_ATOM_NONE;
}

std::optional<XSettings> XSettingsWatch::read() {
  if (!isAlive() || x11_.root() == XCB_NONE) return std::nullopt;
  x11_.beginQuestions(settingsPatience);
  if (!findAtoms()) return std::nullopt;
  // A new manager announces itself on the root window.
  const std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(x11_.get(), x11_.root(), XCB_CW_EVENT_MASK, &structure);
  const auto owner =
      x11_.take<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(x11_.get(), selection_).sequence);
  if (!owner || owner->owner == XCB_NONE) return std::nullopt;
  const std::uint32_t changes = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(x11_.get(), owner->owner, XCB_CW_EVENT_MASK, &changes);
  const auto bytes = x11_.values<char>(x11_.property(owner->owner, property_, property_, longestProperty));
  xcb_flush(x11_.get());
  return parseXSettings({bytes.data(), bytes.size()});
}

int XSettingsWatch::descriptor() const { return isAlive() ? xcb_get_file_descriptor(x11_.get()) : -1; }

bool XSettingsWatch::takeChanges() {
  bool matters = false;
  while (X11Connection::Owned<xcb_generic_event_t> event{xcb_poll_for_event(x11_.get())}) {
    const auto type = event->response_type & 0x7f;
    const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
    matters = matters || type == XCB_PROPERTY_NOTIFY || type == XCB_DESTROY_NOTIFY ||
              (type == XCB_CLIENT_MESSAGE && message->type == manager_);
  }
  return matters;
}

}  // namespace tollvane
