// Texts: a setting that is not set, a built-in text, or an own copy; characters, words, lists.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ov {

// Buffers of the gateway's programs hold 8192 bytes for a text and 4096 for a path, the
// terminating NUL included.
inline constexpr std::size_t MaxText = 8191;
inline constexpr std::size_t MaxPath = 4095;

// "Not set" differs from the empty text. A built-in text is only pointed to, so that settings
// are initialised at compile time and nothing is allocated before main.
class Text {
  public:
    constexpr Text() = default;
    constexpr Text(const char* builtin) : text_(builtin) {}

    void set(std::string_view value) {
        auto own = std::make_unique_for_overwrite<char[]>(value.size() + 1);
        own[value.copy(own.get(), value.size())] = '\0';
        own_ = std::move(own);
        text_ = own_.get();
    }
    void unset() {
        own_.reset();
        text_ = nullptr;
    }

    // The text, or a null pointer when not set.
    const char* c_str() const { return text_; }
    // The text, empty when not set.
    std::string_view view() const { return text_ ? std::string_view(text_) : std::string_view(); }
    explicit operator bool() const { return text_ != nullptr; }

  private:
    const char* text_ = nullptr;
    std::unique_ptr<char[]> own_;
};

// ASCII letters and digits, whatever the locale is: names and words in files are made of them.
constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
// The text with its letters in lower case.
std::string lowered(std::string text);
constexpr bool is_letter_or_digit(char c) {
    return is_digit(c) || (lower(c) >= 'a' && lower(c) <= 'z');
}
// One of those, or of ".", "-" and "_".
constexpr bool is_name_character(char c) {
    return is_letter_or_digit(c) || c == '.' || c == '-' || c == '_';
}
constexpr bool is_printable(char c) {
    return c >= ' ' && c <= '~';
}

// The part of `text` before its first NUL: what a program that holds it as a C string sees.
inline std::string_view c_text(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// The text as a report shows it: of more than `length` characters, the first ones and "...".
std::string shortenstring(std::string_view text, std::size_t length);

// The fields of `str`, which any character of `sep` separates. Runs of separators make no empty
// fields. Nothing, after a message on standard error, when memory is exhausted.
std::optional<std::vector<std::string>> split_str(std::string_view str, std::string_view sep);

// Whether two texts are equal without regard to the case of ASCII letters.
constexpr bool same_word(std::string_view a, std::string_view b) {
    // Most names are written as they are spelled here.
    return a == b || std::equal(a.begin(), a.end(), b.begin(), b.end(),
                                [](char x, char y) { return lower(x) == lower(y); });
}

// Copies at most `len` - 1 characters and always terminates when `len` is not 0. Returns the
// length of `src`.
std::size_t strlcpy(char* dst, const char* src, std::size_t len);

// Whether the text is not empty and made of decimal digits only (no sign, no blank).
int is_alldigit(std::string_view text);
inline int is_alldigit(const char* text) {
    return text && is_alldigit(std::string_view(text));
}

} // namespace ov
