// A text setting: not set, a built-in text, or an own copy.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

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
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    void set(std::string value) {
        own_ = std::move(value);
        text_ = own_->c_str();
    }
    void unset() { text_ = nullptr; }

    // The text, or a null pointer when not set.
    const char* c_str() const { return text_; }
    // The text, empty when not set.
    std::string_view view() const { return text_ ? std::string_view(text_) : std::string_view(); }
    explicit operator bool() const { return text_ != nullptr; }

  private:
    const char* text_ = nullptr;
    std::optional<std::string> own_;
};

// The part of `text` before its first NUL: what a program that holds it as a C string sees.
inline std::string_view c_text(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// The text as a report shows it: of more than `length` characters, the first ones and "...".
std::string shortenstring(std::string_view text, std::size_t length);

// Whether two texts are equal without regard to the case of ASCII letters.
bool same_word(std::string_view a, std::string_view b);

} // namespace ov
