#include "support/text.h"

#include <unicode/uchar.h>
#include <unicode/uregex.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <memory>

#include "support/ascii.h"

namespace tollvane::text {
namespace {

// ICU counts in 32 bits. No text that is shown comes near.
constexpr std::size_t longest = INT_MAX;

struct CloseExpression {
  void operator()(URegularExpression* expression) const { uregex_close(expression); }
};

// A pattern of one user-perceived character, and not ICU's iterator over characters: macOS publishes only this part of
// its ICU. To compile it takes long; one serves for the life of a thread.
URegularExpression* oneCharacter() {
  thread_local const std::unique_ptr<URegularExpression, CloseExpression> expression = [] {
    UErrorCode status = U_ZERO_ERROR;
    UParseError place{};
    return std::unique_ptr<URegularExpression, CloseExpression>(uregex_openC("\\X", 0, &place, &status));
  }();
  return expression.get();
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  const char* bytes = text.data();
  const auto length = static_cast<std::int32_t>(std::min(text.size(), longest));
  std::int32_t begin = 0;
  for (std::int32_t next = 0; next < length; begin = next) {
    UChar32 c;
    U8_NEXT(bytes, next, length, c);
    if (c < 0 || !u_isUWhiteSpace(c)) break;
  }
  std::int32_t end = length;
  for (std::int32_t next = length; next > begin; end = next) {
    UChar32 c;
    U8_PREV(bytes, begin, next, c);
    if (c < 0 || !u_isUWhiteSpace(c)) break;
  }
  return text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

std::string_view prefix(std::string_view text, std::size_t characters) {
  URegularExpression* const character = oneCharacter();
  if (character == nullptr || text.empty()) return text;
  UErrorCode status = U_ZERO_ERROR;
  UText view = UTEXT_INITIALIZER;
  utext_openUTF8(&view, text.data(), static_cast<std::int64_t>(std::min(text.size(), longest)), &status);
  uregex_setUText(character, &view, &status);
  std::int64_t end = 0;
  for (; characters > 0 && uregex_findNext(character, &status) != 0; --characters)
    end = uregex_end64(character, 0, &status);
  utext_close(&view);
  const bool isPart = U_SUCCESS(status) && characters == 0;
  return isPart ? text.substr(0, static_cast<std::size_t>(end)) : text;
}

std::string withoutControls(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    UChar32 c = 0;
    U8_NEXT_OR_FFFD(bytes, at, text.size(), c);
    const auto character = static_cast<char32_t>(c);
    if (isBidiControl(character)) continue;
    std::array<std::uint8_t, U8_MAX_LENGTH> encoded{};
    std::size_t size = 0;
    U8_APPEND_UNSAFE(encoded.data(), size, isControl(character) ? ' ' : c);
    plain.append(encoded.begin(), encoded.begin() + static_cast<std::ptrdiff_t>(size));
  }
  return plain;
}

bool isWebPage(std::string_view url) {
  for (const std::string_view scheme : {"https://", "http://"})
    if (url.size() > scheme.size() && ascii::startsWithIgnoringCase(url, scheme)) return true;
  return false;
}

}  // namespace tollvane::text
