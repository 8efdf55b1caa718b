#include "kinds/loading.h"
#include "kinds/values.h"
#include "value/convert.h"

#include <array>
#include <cstdio>

namespace ov::kinds {

namespace {

std::string shown_date(const Value& value, const char* unspecified) {
    const char* text = setting<Text>(value).c_str();
    int year = 0;
    int month = 0;
    int day = 0;
    if (!text) {
        return unspecified;
    }
    if (date_str(text, &year, &month, &day) != 0) {
        return std::string(text) + " (invalid value)";
    }
    return text;
}

} // namespace

Verdict load_text(const Loading& value) {
    setting<Text>(value).set(value.text);
    return Verdict::Taken;
}

bool is_anything(const Value&) {
    return true;
}

bool is_one_word(const Value& value) {
    return value.text.find(' ') == std::string::npos;
}

Verdict load_signature(const Loading& value) {
    if (value.text.size() > value.manner.longest) {
        value.load.tell("Signature too long: " + value.text + "\n");
        return Verdict::Invalid;
    }
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    return load_text(value);
}

Verdict load_date(const Loading& value) {
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    int ignored = 0;
    setting<Text>(value).set(value.text);
    return date_str(value.text.c_str(), &ignored, &ignored, &ignored) == 0 ? Verdict::Taken
                                                                           : Verdict::Invalid;
}

std::optional<std::string> show_text(const Value& value) {
    return std::string(setting<Text>(value).view());
}

std::optional<std::string> show_lower_bound(const Value& value) {
    return shown_date(value, "***unspecified***");
}

std::optional<std::string> show_upper_bound(const Value& value) {
    return shown_date(value, "*** unspecified ***");
}

} // namespace ov::kinds
