#include "util/paths.h"
#include "kinds/loading.h"
#include "kinds/sets.h"
#include "kinds/values.h"
#include "util/disk.h"
#include "value/convert.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace ov::kinds {

namespace {

const Text& base_of(const Value& value) {
    return other<Text>(value.manner.first);
}

// The directory `base` as an absolute path, which nothing may have made it yet: then
// `made` holds it. Null when it cannot be made one.
const char* absolute_base(const Text& base, std::optional<std::string>& made) {
    if (isfullpath(base.c_str()) && base.view().ends_with('/')) {
        return base.c_str();
    }
    made = mk_dirpath(installation.root.c_str(), base.c_str());
    return made ? made->c_str() : nullptr;
}

// What became of a path that should be stored: nothing was made of it, or it was.
Verdict take_path(const Loading& value, const std::optional<std::string>& path) {
    if (!path && errno == ENOMEM) {
        return Verdict::MemoryExhausted;
    }
    if (!path) {
        return value.reader == SearchReader ? Verdict::NotConfigured : Verdict::Invalid;
    }
    setting<Text>(value).set(*path);
    return Verdict::Taken;
}

// Puts a default in its place. One for which the place is too deep stays as it is: a key that is
// absent is never refused.
Verdict take_default(const Loading& value, const std::optional<std::string>& path) {
    Text& target = setting<Text>(value);
    if (path) {
        target.set(*path);
    } else if (target && errno == ENOMEM) {
        return Verdict::MemoryExhausted;
    }
    return Verdict::Taken;
}

std::optional<std::string> file_path(const char* name) {
    std::optional<std::string> made;
    const char* base = isfullpath(name) ? nullptr : absolute_base(installation.etc, made);
    return base || isfullpath(name) ? mk_filepath(base, name) : std::nullopt;
}

std::optional<std::string> directory_path(const Text& under, const char* name) {
    std::optional<std::string> made;
    const char* base = isfullpath(name) ? nullptr : absolute_base(under, made);
    return base || isfullpath(name) ? mk_dirpath(base, name) : std::nullopt;
}

// Stores the path of a directory that stands in the file, when it exists.
Verdict take_directory(const Loading& value, const std::optional<std::string>& path) {
    if (path && !(value.load.mask & RC_NODIRCHECK) && !value.load.knows_directory(*path)) {
        return Verdict::Invalid;
    }
    return take_path(value, path);
}

bool is_directory(const std::optional<std::string>& path) {
    return path && isvalid_dir(path->c_str());
}

} // namespace

Verdict load_path(const Loading& value) {
    if (!isfullpath(value.text.c_str())) {
        return Verdict::NotFullPath;
    }
    struct stat info = {};
    if (!(value.load.mask & RC_NOCHECK) && !value.load.lies_under_missing(value.text) &&
        (value.text.size() > MaxPath || ::stat(value.text.c_str(), &info) != 0)) {
        return Verdict::Invalid;
    }
    return load_text(value);
}

Verdict load_file(const Loading& value) {
    return take_path(value, file_path(value.text.c_str()));
}

Verdict default_file(const Loading& value) {
    return take_default(value, file_path(setting<Text>(value).c_str()));
}

Verdict load_full_file(const Loading& value) {
    return isfullpath(value.text.c_str()) ? load_file(value) : Verdict::NotFullPath;
}

Verdict load_directory(const Loading& value) {
    return value.text.empty()
               ? Verdict::Invalid
               : take_directory(value, directory_path(base_of(value), value.text.c_str()));
}

Verdict default_directory(const Loading& value) {
    return take_default(value, directory_path(base_of(value), setting<Text>(value).c_str()));
}

// Another load may be making it at the same time.
Verdict load_created_directory(const Loading& value) {
    if (value.text.empty()) {
        return Verdict::Invalid;
    }
    const std::optional<std::string> path = directory_path(base_of(value), value.text.c_str());
    if (path && !(value.load.mask & RC_NODIRCHECK) && !value.load.knows_directory(*path)) {
        value.load.missing.pop_back();
        value.load.make(value.load, *path);
    }
    return take_directory(value, path);
}

Verdict load_full_directory(const Loading& value) {
    if (value.text.empty()) {
        return Verdict::Invalid;
    }
    return isfullpath(value.text.c_str())
               ? take_directory(value, mk_dirpath(nullptr, value.text.c_str()))
               : Verdict::NotFullPath;
}

Verdict load_template_directory(const Loading& value) {
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    const std::optional<std::string> path = directory_path(installation.root, value.text.c_str());
    return value.reader == MainReader ? take_path(value, path) : take_directory(value, path);
}

Verdict default_template_directory(const Loading& value) {
    return take_default(value, directory_path(installation.root, setting<Text>(value).c_str()));
}

bool is_command(const Value& value) {
    const WordList words = split_str(value.text, " ");
    return words && !words->empty() && isvalid_program(words->front().c_str());
}

bool is_program(const Value& value) {
    return isvalid_program(value.text.c_str()) != 0;
}

bool is_queue_directory(const Value& value) {
    return isvalid_full_dir(value.text.c_str()) != 0;
}

bool is_list_program(const Value& value) {
    return !isfullpath(value.text.c_str()) || is_program(value);
}

bool is_existing_directory(const Value& value) {
    return isvalid_dir(value.text.c_str()) != 0;
}

// No settings have been loaded when this is checked: the base may still be a relative one.
bool is_directory_under(const Value& value) {
    return is_directory(directory_path(base_of(value), value.text.c_str()));
}

// RootDirectory itself is looked up for a check.
bool is_directory_under_root(const Value& value) {
    return is_directory(directory_path(installation.root, value.text.c_str()));
}

bool are_directories(const Value& value) {
    return all_words(value, separators_of(value),
                     [](const std::string& word) { return isvalid_dir(word.c_str()) != 0; });
}

bool are_devices(const Value& value) {
    const WordList words = split_str(value.text, separators_of(value));
    const auto is_writable = [](const std::string& word) {
        return ::access(word.c_str(), W_OK) == 0;
    };
    const auto is_device = [](const std::string& word) { return !isvalid_dir(word.c_str()); };
    return words && std::all_of(words->begin(), words->end(), is_writable) &&
           std::any_of(words->begin(), words->end(), is_device);
}

bool is_template_file(const Value& value) {
    return isvalid_file(installation.templates.c_str(), value.text.c_str()) != 0;
}

bool is_keyword_set(const Value& value) {
    return isvalid_keywd(value.text) != 0;
}

bool is_mime_type_set(const Value& value) {
    return isvalid_mtype(value.text) != 0;
}

} // namespace ov::kinds
