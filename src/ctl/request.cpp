#include "ctl/request.h"

#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "catalogue/rights.h"
#include "conf/layout.h"
#include "ctl/document.h"
#include "ctl/json.h"
#include "ctl/shown.h"
#include "load/roles.h"
#include "util/place.h"
#include "util/source.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace ov::ctl {

namespace {

bool is_control(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}
bool has_control(std::string_view text) {
    return std::any_of(text.begin(), text.end(), is_control);
}

constexpr const char* NoControl = "control characters are refused";

// What may be asked for once.
std::string id_of(const Asked& asked) {
    return asked.user + '\n' +
           folded(asked.section, asked.key.value_or(asked.file_only ? "\n\n" : "\n"));
}

} // namespace

// An entry before anything is known of its name. `typed` is for a value that a program has given;
// nothing: it goes.
struct RequestReader::Raw {
    std::string source = {}; // as messages name it; empty: the command line
    int line = 0;
    std::string section = {};
    std::optional<std::string> key = {};
    Typed typed = {};
    const Entry* entry = nullptr; // of a fragment: the value is as the key reads it
    bool secret = false;
    bool file_only = false;

    Finding because(const char* code, std::string message) const {
        return {.code = code,
                .file = source,
                .line = line,
                .section = section,
                .key = key.value_or(""),
                .message = std::move(message)};
    }
};

void RequestReader::complain(int status, Finding why) {
    request_.complaints.push_back(std::move(why));
    request_.status = std::max(request_.status, status);
}

// Finds the text of the value; returns false when there is none, after telling why.
bool RequestReader::find_value(const Raw& raw, Asked& asked) {
    const auto refused = [&](const char* code, const char* why) {
        complain(NotGood, raw.because(code, why));
        return false;
    };
    if (raw.entry) {
        const auto value = value_in(*raw.entry, asked.mode());
        if (!value) {
            return refused("no-value", "a bracket or \"=\" is no value");
        }
        if (raw.entry->rest.size() > MaxText + 1) {
            return refused("long-line", "the value is longer than 8191 bytes");
        }
        asked.value = *value;
        // What a reader would cut off unseen.
        const std::string_view rest = raw.entry->rest;
        const std::size_t begin = std::min(rest.find_first_not_of(" \t"), rest.size());
        const std::size_t end = rest.find_last_not_of(" \t") + 1;
        if (has_control(rest.substr(begin, std::max(begin, end) - begin))) {
            return refused("control-character", NoControl);
        }
    } else if (!std::holds_alternative<std::monostate>(raw.typed)) {
        asked.value = text_of(asked.known ? asked.known->rules : nullptr, raw.typed);
        if (!asked.value) {
            return refused("wrong-type", "the key takes no value of this type: give it as a text");
        }
    }
    if (asked.value && has_control(*asked.value)) {
        return refused("control-character", NoControl);
    }
    if (asked.is_secret() && asked.value && !asked.value->empty() &&
        asked.value->find_first_not_of('*') == std::string::npos) {
        return refused("masked-value",
                       "asterisks stand in the place of a password that is not shown");
    }
    return true;
}

void RequestReader::add(const Raw& raw) {
    Asked asked{.section = raw.section,
                .key = raw.key,
                .value = {},
                .secret = raw.secret,
                .file_only = raw.file_only};
    if (by_user_) {
        asked.user = raw.section;
        asked.section = known_.role_section();
        if (!isvalid_username(asked.user)) {
            complain(WrongCall, raw.because("invalid-name", "no user may have this name"));
            return;
        }
    }
    if (has_control(asked.section) || has_control(asked.key.value_or(""))) {
        complain(NotGood, raw.because("control-character", NoControl));
        return;
    }
    if (asked.section.empty() || (asked.key && asked.key->empty())) {
        complain(NotGood, raw.because("invalid-name", "an empty name is refused"));
        return;
    }
    if (const auto section = known_.section(asked.section); !section.empty()) {
        asked.section = section;
    }
    const KnownKey* known = asked.key ? known_.find(asked.section, *asked.key) : nullptr;
    if (known) {
        asked.key = known->key;
        asked.known = *known;
    }
    const bool is_section = !known_.section(asked.section).empty();
    const bool is_known = known || (is_section && !asked.key);
    if (!is_known && !(unknown_ && (is_section || !known_.role_section()))) {
        complain(NoSuchName, raw.because(is_section ? "unknown-key" : "unknown-section",
                                         known_.no_such(asked.section, asked.key)));
        return;
    }
    if (!named_.insert(id_of(asked)).second && !asked.file_only) {
        complain(WrongCall, raw.because("named-twice", "is named twice"));
        return;
    }
    if (find_value(raw, asked)) {
        request_.asked.push_back(std::move(asked));
    }
}

void RequestReader::add_operand(const std::string& operand) {
    const std::size_t equal = operand.find('=');
    const std::string name = operand.substr(0, equal);
    const std::size_t dot = name.find('.');
    if (const char* section = known_.role_section(); section && !by_user_) {
        add({.section = section, .key = name, .typed = operand.substr(equal + 1)});
    } else if (dot == name.npos) {
        complain(WrongCall, {.code = "invalid-name",
                             .message = '"' + name + "\" is no name of an entry: " +
                                        (by_user_ ? "User.Right" : "Section.Key") + " is wanted"});
    } else {
        add({.section = name.substr(0, dot),
             .key = name.substr(dot + 1),
             .typed = operand.substr(equal + 1)});
    }
}

void RequestReader::add_deletion(const std::string& name) {
    const std::size_t dot = name.find('.');
    if (const char* section = known_.role_section(); section && !by_user_) {
        add({.section = section, .key = name});
    } else if (dot == name.npos) {
        add({.section = name, .key = std::nullopt});
    } else {
        add({.section = name.substr(0, dot), .key = name.substr(dot + 1)});
    }
}

void RequestReader::add_fragment(const std::string& source, const std::string& text) {
    // A rights file has one section.
    const char* section = by_user_ ? nullptr : known_.role_section();
    const std::string whole = section ? '[' + std::string(section) + "]\n" + text : text;
    Layout layout(whole);
    while (const std::optional<LaidOut> piece = layout.next()) {
        Raw raw{.source = source, .line = piece->line - (section ? 1 : 0)};
        if (piece->piece == Piece::Entry) {
            const Entry entry = entry_of(*piece);
            raw.section = piece->section;
            raw.key = piece->key;
            raw.entry = &entry;
            add(raw);
        } else if (!piece->has_section) {
            const bool has_mark = text.starts_with("\xef\xbb\xbf");
            complain(NotGood,
                     has_mark
                         ? raw.because("byte-order-mark",
                                       "begins with a byte order mark, which hides its header")
                         : raw.because("before-section", "stands in front of the first header"));
        } else if (piece->piece == Piece::Header && by_user_) {
            raw.section = piece->section;
            raw.file_only = true;
            add(raw);
        } else if (piece->piece != Piece::Header) {
            complain(NotGood,
                     raw.because("skipped-line", "is neither an entry (Key = value) nor a header"));
        }
    }
}

void RequestReader::add_json(const std::string& source, const std::string& text) {
    std::string why;
    const auto entries = entries_of_json(text, why);
    if (!entries) {
        complain(NotGood, {.code = "invalid-json", .file = source, .message = why});
        return;
    }
    std::size_t number = 0;
    for (const JsonEntry& entry : *entries) {
        const std::optional<std::string>& other = by_user_ ? entry.section : entry.user;
        const std::optional<std::string>& where = by_user_ ? entry.user : entry.section;
        const char* section = where ? where->c_str() : by_user_ ? nullptr : known_.role_section();
        const Raw raw{.source = source + ": entry " + std::to_string(++number),
                      .section = section ? section : "",
                      .key = entry.key,
                      .typed = entry.value,
                      .secret = entry.secret,
                      .file_only = entry.user_alone};
        if (other || !section) {
            complain(NotGood, raw.because("invalid-json",
                                          std::string(other ? "has" : "lacks") +
                                              (by_user_ == other.has_value() ? " \"section\""
                                                                             : " \"user\"")));
        } else if (!entry.key && !std::holds_alternative<std::monostate>(entry.value)) {
            complain(NotGood, raw.because("invalid-json",
                                          "a section has no value: it can be deleted by null"));
        } else {
            add(raw);
        }
    }
}

Request RequestReader::take() {
    // The right goes under its older name, too, which would be read then.
    const RightRow& excluded = row_of(Right::ExcludeGroup);
    for (std::size_t i = 0; i < request_.asked.size(); ++i) {
        Asked older = request_.asked[i];
        if (older.known && older.known->rules == &excluded && !older.value) {
            older.key = OldExcludeGroup;
            if (named_.insert(id_of(older)).second) {
                request_.asked.push_back(std::move(older));
            }
        }
    }
    // A section that goes as a whole leaves nothing to be said of its keys.
    for (const Asked& asked : request_.asked) {
        if ((asked.key || asked.file_only) &&
            named_.contains(id_of({.section = asked.section, .user = asked.user}))) {
            complain(WrongCall, {.code = "named-twice",
                                 .section = by_user_ ? asked.user : asked.section,
                                 .key = asked.key.value_or(""),
                                 .message = by_user_ ? "is to be removed, and to have rights"
                                                     : "is named, and its whole section, too"});
            break;
        }
    }
    return std::move(request_);
}

int Asked::mode() const {
    return known ? known->mode() : LineMode;
}

namespace {

// Whether an argument is the path of a fragment. Any other one with a "=" is an entry.
bool is_path(const std::string& operand) {
    return operand.find('=') == operand.npos || operand.starts_with('/') ||
           operand.starts_with("./") || operand.starts_with("../");
}

void add_file(RequestReader& reader, const std::string& operand, bool is_json) {
    const bool is_input = operand == "-";
    const std::string source = is_input ? "standard input" : operand;
    const Fd file = is_input ? Fd(::dup(STDIN_FILENO)) : open_file(operand.c_str(), O_RDONLY);
    const auto text = file ? read_whole(file.get()) : std::nullopt;
    if (!text) {
        const bool is_none = errno == ENOENT && !is_input;
        reader.complain(NotOpened,
                        {.code = "cannot-open",
                         .file = source,
                         .message = why_not_opened() + (is_none ? ", and no NAME=VALUE" : "")});
    } else if (is_json) {
        reader.add_json(source, *text);
    } else {
        reader.add_fragment(source, *text);
    }
}

} // namespace

Request read_request(const Options& options, const std::optional<RightsOf>& whose) {
    RequestReader reader(whose, options.unknown);
    if (std::count(options.operands.begin(), options.operands.end(), "-") > 1) {
        reader.complain(WrongCall,
                        {.code = "named-twice", .message = "standard input can be read once"});
        return reader.take();
    }
    for (const std::string& operand : options.operands) {
        if (is_path(operand)) {
            add_file(reader, operand, options.json);
        } else {
            reader.add_operand(operand);
        }
    }
    for (const std::string& name : options.deleted) {
        reader.add_deletion(name);
    }
    return reader.take();
}

} // namespace ov::ctl
