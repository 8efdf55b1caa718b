#include "ctl/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace ov::ctl {

namespace {

using Json = nlohmann::ordered_json;

std::string base64(std::string_view bytes) {
    constexpr std::string_view Digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
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
    Json list = Json::array();
    for (const ShownKey& key : keys) {
        list.push_back(json(key, with_secrets));
    }
    return line(list);
}

std::string json_of(const std::vector<Difference>& changed) {
    Json list = Json::array();
    for (const Difference& key : changed) {
        Json object{{"section", key.section},
                    {"key", key.key},
                    {"before", key.secret ? Json() : optional_text(key.before)},
                    {"after", key.secret ? Json() : optional_text(key.after)}};
        if (key.secret) {
            object["masked"] = true;
        }
        list.push_back(std::move(object));
    }
    return line({{"changed", std::move(list)}});
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

} // namespace ov::ctl
