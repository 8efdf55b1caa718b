#include "ctl/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

namespace ov::ctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view three = bytes.substr(i, 3);
        unsigned bits = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            bits = bits << 8 | (j < three.size() ? static_cast<unsigned char>(three[j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            text += j <= three.size() ? Digits[bits >> (18 - 6 * j) & 0x3f] : '=';
        }
    }
    return text;
}

// The bytes that a text of base64 stands for; nothing when it is none.
std::optional<std::string> from_base64(std::string_view text) {
    std::string bytes;
    unsigned bits = 0;
    std::size_t count = 0;
    for (const char digit : text.substr(0, text.find_last_not_of('=') + 1)) {
        const std::size_t value = Digits.find(digit);
        if (value == Digits.npos) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<unsigned>(value);
        if (++count % 4 != 1) {
            bytes += static_cast<char>(bits >> (6 - 2 * ((count - 1) % 4)) & 0xff);
        }
    }
    return base64(bytes) == text ? std::optional(bytes) : std::nullopt;
}

bool is_utf8(const std::string& text) {
    try {
        [[maybe_unused]] const std::string shown = Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

Json text(std::string_view value) {
    const bool is_ascii =
        std::all_of(value.begin(), value.end(), [](char c) { return (c & 0x80) == 0; });
    std::string copy(value);
    return is_ascii || is_utf8(copy) ? Json(std::move(copy)) : Json{{"base64", base64(value)}};
}

Json optional_text(const std::optional<std::string>& value) {
    return value ? text(*value) : Json();
}

struct ToJson {
    Json operator()(std::monostate) const { return {}; }
    Json operator()(bool value) const { return value; }
    Json operator()(const std::string& value) const { return text(value); }
    Json operator()(const std::vector<std::string>& values) const {
        Json list = Json::array();
        for (const std::string& value : values) {
            list.push_back(text(value));
        }
        return list;
    }
    // What is larger is no exact number to many programs.
    template <class Number>
    Json operator()(Number value) const {
        constexpr auto Largest = std::int64_t{1} << 53;
        return std::cmp_greater(value, Largest) || std::cmp_less(value, -Largest)
                   ? Json(std::to_string(value))
                   : Json(value);
    }
};

Json json(const Finding& finding) {
    return {{"code", finding.code},
            {"file", text(finding.file)},
            {"line", finding.line},
            {"section", text(finding.section)},
            {"key", text(finding.key)},
            {"value", text(finding.value)},
            {"message", text(finding.message)}};
}

Json json(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        list.push_back(json(finding));
    }
    return list;
}

Json json(const ShownKey& key, bool with_secrets) {
    const bool is_masked = key.secret && !with_secrets && key.value;
    Json object = Json::object();
    object["section"] = key.section;
    object["key"] = key.key;
    object["value"] = is_masked ? Json() : optional_text(key.value);
    object["default"] = optional_text(key.initial);
    object["changed"] = key.is_changed();
    object["origin"] = Json();
    if (!key.file.empty()) {
        object["origin"] = {{"file", text(key.file)}, {"line", key.line}};
    }
    object["kind"] = key.kind;
    object["secret"] = key.secret;
    object["typed"] = is_masked ? Json() : std::visit(ToJson(), key.typed);
    if (is_masked) {
        object["masked"] = true;
    }
    return object;
}

Json json(const std::vector<ShownKey>& keys, bool with_secrets) {
    Json list = Json::array();
    for (const ShownKey& key : keys) {
        list.push_back(json(key, with_secrets));
    }
    return list;
}

Json json(const std::vector<Difference>& changed) {
    Json list = Json::array();
    for (const Difference& key : changed) {
        Json object{{"section", text(key.section)},
                    {"key", optional_text(key.key)},
                    {"before", key.secret ? Json() : optional_text(key.before)},
                    {"after", key.secret ? Json() : optional_text(key.after)}};
        if (key.secret) {
            object["masked"] = true;
        }
        list.push_back(std::move(object));
    }
    return list;
}

// What is wrong with a text that a program has sent.
struct Unusable {
    std::string why;
};

// A text: a string, or an object with bytes in base64. Nothing for any other value.
std::optional<std::string> text_in(const Json& json) {
    if (json.is_string()) {
        return json.get<std::string>();
    }
    const bool is_coded = json.is_object() && json.size() == 1 && json.contains("base64") &&
                          json["base64"].is_string();
    return is_coded ? from_base64(json["base64"].get<std::string>()) : std::nullopt;
}

Typed typed_in(const Json& json, const std::string& place) {
    if (json.is_null()) {
        return {};
    }
    if (json.is_boolean()) {
        return json.get<bool>();
    }
    if (json.is_number_unsigned()) {
        return json.get<std::uint64_t>();
    }
    if (json.is_number_integer()) {
        return json.get<std::int64_t>();
    }
    if (json.is_array()) {
        std::vector<std::string> items;
        for (const Json& item : json) {
            const auto text = text_in(item);
            if (!text) {
                throw Unusable{place + ": a list has texts only"};
            }
            items.push_back(*text);
        }
        return items;
    }
    const auto text = text_in(json);
    if (!text) {
        throw Unusable{place + ": \"value\" is no text, whole number, boolean, list or null"};
    }
    return *text;
}

JsonEntry entry_in(const Json& json, const std::string& place) {
    const bool user_alone = json.is_object() && json.size() == 1 && json.contains("user");
    if (!user_alone && (!json.is_object() || !json.contains("key") || !json.contains("value"))) {
        throw Unusable{place + R"( is no object with "section", "key" and "value")"};
    }
    JsonEntry entry{.user_alone = user_alone};
    for (const auto& [name, value] : json.items()) {
        if (name == "value") {
            entry.value = typed_in(value, place);
            continue;
        }
        if (name == "secret" && value.is_boolean()) {
            entry.secret = value.get<bool>();
            continue;
        }
        if (name != "section" && name != "key" && name != "user") {
            throw Unusable{std::string(place).append(": unknown field \"").append(name) += '"'};
        }
        std::optional<std::string> text = text_in(value);
        if (!text && !value.is_null()) {
            throw Unusable{std::string(place).append(": \"").append(name) += "\" is no text"};
        }
        (name == "key" ? entry.key : name == "user" ? entry.user : entry.section) = std::move(text);
    }
    return entry;
}

// Parses a text in which no object has a name twice.
Json parsed(const std::string& text) {
    std::vector<std::set<std::string>> names; // of the objects that are open
    return Json::parse(text, [&names](int depth, Json::parse_event_t event, Json& value) {
        constexpr int Deepest = 8; // a list of objects with lists of coded texts takes fewer
        if (depth > Deepest) {
            throw Unusable{"is nested too deeply"};
        }
        if (event == Json::parse_event_t::object_start) {
            names.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            names.pop_back();
        } else if (event == Json::parse_event_t::key &&
                   !names.back().insert(value.get<std::string>()).second) {
            throw Unusable{"\"" + value.get<std::string>() + "\" is given twice in an object"};
        }
        return true;
    });
}

std::string line(const Json& json) {
    return json.dump() + '\n';
}

} // namespace

std::string json_of(const Findings& findings) {
    return line({{"file", text(findings.file)},
                 {"errors", json(findings.errors)},
                 {"warnings", json(findings.warnings)}});
}

std::string json_of(const std::vector<ShownKey>& keys, bool with_secrets) {
    return line(json(keys, with_secrets));
}

std::string json_of(const UserRights& rights) {
    return line({{"user", rights.user},
                 {"file", text(rights.file)},
                 {"rights", json(rights.rights, false)}});
}

std::string json_of(const std::vector<Difference>& changed) {
    return line({{"changed", json(changed)}});
}

std::string json_of(const Applied& applied) {
    const auto text_or_null = [](const std::string& value) {
        return value.empty() ? Json() : text(value);
    };
    Json object = Json::object();
    if (!applied.user.empty()) {
        object["user"] = applied.user;
    }
    object.update(Json{{"file", text(applied.file)},
                       {"changed", json(applied.changed)},
                       {"written", applied.written},
                       {"how", text_or_null(applied.how)},
                       {"note", text_or_null(applied.note)},
                       {"backup", text_or_null(applied.backup)},
                       {"errors", json(applied.errors)},
                       {"warnings", json(applied.warnings)}});
    return line(object);
}

std::string json_of(const std::vector<Explanation>& explained) {
    Json list = Json::array();
    for (const Explanation& about : explained) {
        Json object = Json::object();
        for (const auto& [term, value] : about) {
            object[term] = std::visit(ToJson(), value);
        }
        list.push_back(std::move(object));
    }
    return line(list);
}

std::string json_of(const std::vector<Leftover>& leftovers) {
    constexpr const char* contents[] = {"foreign", "equal", "whole", "part", "other"};
    Json list = Json::array();
    for (const Leftover& left : leftovers) {
        list.push_back({{"name", text(left.name)},
                        {"of", left.of == Leftover::Of::Conf ? "ov_conf" : "ov_confctl"},
                        {"size", left.size},
                        {"time", left.time},
                        {"content", contents[static_cast<std::size_t>(left.what)]},
                        {"put_back", left.may_be_put_back()},
                        {"remove", left.reason.empty()},
                        {"message", text(in_words(left))}});
    }
    return line(list);
}

std::optional<std::vector<JsonEntry>> entries_of_json(const std::string& text, std::string& why) {
    try {
        const Json list = parsed(text);
        if (!list.is_array()) {
            throw Unusable{"is no list"};
        }
        std::vector<JsonEntry> entries;
        for (const Json& json : list) {
            entries.push_back(entry_in(json, "entry " + std::to_string(entries.size() + 1)));
        }
        return entries;
    } catch (const Json::parse_error& error) {
        why = "is no JSON: at byte " + std::to_string(error.byte);
    } catch (const Json::exception&) {
        why = "has a number that is too large";
    } catch (const Unusable& unusable) {
        why = unusable.why;
    }
    return std::nullopt;
}

} // namespace ov::ctl
