// What a value is for, and what it is made of, for the functions of the kinds.
#pragma once

#include "kinds/kinds.h"

#include <algorithm>
#include <string>

namespace ov::kinds {

// The setting that the value is for.
template <class Type>
Type& setting(const Value& value) {
    return *std::get<Type*>(value.variable);
}

// The other setting that the row names.
template <class Type>
Type& other(const Other& name) {
    return setting_of(std::get<SettingOf<Type>>(name));
}

// The number in it.
inline std::int64_t number_of(const Value& value) {
    return number_in(std::get<Number>(value.variable));
}

inline const char* separators_of(const Value& value) {
    return value.manner.separators.data();
}

// Whether all words of the value pass the test.
template <class Test>
bool all_words(const Value& value, const char* separators, Test test) {
    const WordList words = split_str(value.text, separators);
    return words && std::all_of(words->begin(), words->end(), test);
}

} // namespace ov::kinds
