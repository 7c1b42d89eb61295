#include "soundlog/arguments.h"

#include <optional>
#include <utility>

#include "soundlog/lines.h"

namespace tollvane::soundlog {
namespace {

constexpr std::string_view usageText =
    "Usage: TollvaneLog stream [--style readable|ndjson] [--predicate TEXT]\n"
    "\n"
    "Prints a line for each sound that a program begins to play and for each notification that an application\n"
    "shows, until it is ended or its reader goes away.\n"
    "\n"
    "  --style readable  time, kind, name and process, for a person (the default)\n"
    "  --style ndjson    one JSON object a line, for a program\n"
    "  --predicate TEXT  accepted for the sake of programs that pass one; nothing but these lines is ever printed,\n"
    "                    so TEXT is not looked at\n"
    "  --help            prints this and ends\n"
    "  --version         prints the version and ends\n";

Mistake mistake(std::string sentence) { return {"TollvaneLog: " + std::move(sentence) + " Try --help."}; }

// Splits the arguments into words. An option's value is written "--name VALUE" or "--name=VALUE".
class Options {
 public:
  explicit Options(std::span<const char* const> arguments) : rest_(arguments) {}

  bool atEnd() const { return rest_.empty(); }
  std::string_view next() {
    const std::string_view word = rest_.front();
    rest_ = rest_.subspan(1);
    const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string_view::npos;
    attached_.reset();
    if (equals == std::string_view::npos) return word;
    attached_ = word.substr(equals + 1);
    return word.substr(0, equals);
  }
  std::optional<std::string_view> value() {
    if (attached_) return std::exchange(attached_, std::nullopt);
    if (rest_.empty()) return std::nullopt;
    const std::string_view word = rest_.front();
    rest_ = rest_.subspan(1);
    return word;
  }
  bool hasAttached() const { return attached_.has_value(); }

 private:
  std::span<const char* const> rest_;
  std::optional<std::string_view> attached_;
};

}  // namespace

std::string_view usage() { return usageText; }

Arguments parseArguments(std::span<const char* const> arguments) {
  Options options(arguments);
  Stream stream;
  bool commanded = false;
  while (!options.atEnd()) {
    const std::string word(options.next());
    if ((word == "--help" || word == "-h") && !options.hasAttached()) return Help{};
    if (word == "--version" && !options.hasAttached()) return Version{};
    if (word == "stream" && !commanded) {
      commanded = true;
    } else if (word == "--predicate") {
      if (!options.value()) return mistake("--predicate needs a text.");
    } else if (word == "--style") {
      const auto style = options.value();
      if (!style) return mistake("--style needs the name of a style: readable or ndjson.");
      if (style != "ndjson" && style != "readable") {
        return mistake("There is no style '" + plainText(*style) + "', only readable and ndjson.");
      }
      stream.style = style == "ndjson" ? Stream::Style::ndjson : Stream::Style::readable;
    } else {
      return mistake("'" + plainText(word) + "' is not understood.");
    }
  }
  if (!commanded) return mistake("Say what to do: stream.");
  return stream;
}

}  // namespace tollvane::soundlog
