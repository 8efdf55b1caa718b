#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/shown.h"

#include <cstdio>

namespace ov::ctl {

namespace {

// What is in force in one configuration.
struct Side {
    std::optional<Document> document = {};
    Survey found = {};
    std::vector<ShownKey> keys = {};
};

// Loads one side. Returns whether it is valid; says why not.
bool load(Side& side, const std::string& file, bool is_default) {
    side.document = is_default ? Document{file, ""} : read_document(file);
    if (!side.document) {
        not_opened(file);
        return false;
    }
    side.found = survey(*side.document, is_default ? Host::IsLeftAlone : Host::MayBeAsked);
    for (const Finding& error : side.found.errors) {
        std::fputs(in_words(error, "error").c_str(), stderr);
    }
    side.keys = shown_keys(*side.document, side.found, key_names(), For::People);
    return side.found.errors.empty();
}

std::optional<std::string> entry_of(const ShownKey& key) {
    return key.file.empty() ? std::nullopt : std::optional(key.value.value_or(""));
}

} // namespace

int diff(const Options& options) {
    if (options.operands.size() + options.defaults != 1) {
        return wrong_call("diff takes one other file, or --defaults");
    }
    // Against the defaults it is told what the file changes.
    Side before;
    Side after;
    const bool is_before = load(before, options.file, options.defaults);
    const bool is_after =
        load(after, options.defaults ? options.file : options.operands.front(), false);
    if (!is_before || !is_after) {
        return NotOpened;
    }
    std::vector<Difference> changed;
    std::string text;
    const char* section = "";
    for (std::size_t i = 0; i < before.keys.size(); ++i) {
        const ShownKey& old_key = before.keys[i];
        const ShownKey& new_key = after.keys[i];
        // What lies elsewhere since a directory does, though neither side has it, goes without
        // saying.
        const bool has_entry = !old_key.file.empty() || !new_key.file.empty();
        if (old_key.value == new_key.value || !has_entry) {
            continue;
        }
        changed.push_back({.section = new_key.section,
                           .key = new_key.key,
                           .before = entry_of(old_key),
                           .after = entry_of(new_key),
                           .secret = new_key.secret && !options.secrets});
        if (std::string_view(section) != new_key.section) {
            section = new_key.section;
            text += std::string("[") + section + "]\n";
        }
        text += '-' + line_of(old_key, options.secrets) + '+' + line_of(new_key, options.secrets);
    }
    std::fputs(options.json ? json_of(changed).c_str() : text.c_str(), stdout);
    return changed.empty() ? Good : NotGood;
}

} // namespace ov::ctl
