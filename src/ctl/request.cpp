#include "ctl/request.h"

#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "catalogue/rights.h"
#include "conf/layout.h"
#include "ctl/json.h"
#include "ctl/known.h"
#include "ctl/shown.h"
#include "ctl/text.h"
#include "util/place.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <unordered_map>

namespace ov::ctl {

namespace {

bool is_control(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}
bool has_control(std::string_view text) {
    return std::any_of(text.begin(), text.end(), is_control);
}

// A wrong call is worst, then a value that is refused, then a name.
int weight(int status) {
    constexpr int order[] = {Good, NoSuchName, NotGood, WrongCall, NotOpened};
    return static_cast<int>(std::find(std::begin(order), std::end(order), status) -
                            std::begin(order));
}

} // namespace

// An entry before anything is known of its name. `typed` is for a value that a program has given;
// nothing: it goes.
struct RequestReader::Raw {
    std::string source = {}; // as messages name it; empty: the command line
    std::string section;
    std::optional<std::string> key;
    Typed typed = {};
    const Entry* entry = nullptr; // of a fragment: the value is as the key reads it
};

void RequestReader::complain(const std::string& source, int status, const std::string& message) {
    request_.complaints.push_back((source.empty() ? "" : source + ": ") + message);
    request_.status =
        std::max(request_.status, status, [](int a, int b) { return weight(a) < weight(b); });
}

// Finds the text of the value; returns false when there is none, after telling why.
bool RequestReader::find_value(const Raw& raw, Asked& asked) {
    const auto refused = [&](const std::string& why) {
        complain(raw.source, NotGood, name_of(asked) + ": " + why);
        return false;
    };
    if (raw.entry) {
        const auto value = asked.mode() == TokenMode ? token_value(*raw.entry)
                                                     : std::optional(line_value(*raw.entry));
        if (!value) {
            return refused("a bracket or \"=\" is no value");
        }
        if (raw.entry->rest.size() > MaxText + 1) {
            return refused("the value is longer than 8191 bytes");
        }
        asked.value = *value;
        // What a reader would cut off unseen.
        const std::string_view rest = raw.entry->rest;
        const std::size_t begin = std::min(rest.find_first_not_of(" \t"), rest.size());
        const std::size_t end = rest.find_last_not_of(" \t") + 1;
        if (has_control(rest.substr(begin, std::max(begin, end) - begin))) {
            return refused("control characters are refused");
        }
    } else if (!std::holds_alternative<std::monostate>(raw.typed)) {
        asked.value = text_of(asked.known ? asked.known->rules : nullptr, raw.typed);
        if (!asked.value) {
            return refused("the key takes no value of this type: give it as a text");
        }
    }
    if (asked.value && has_control(*asked.value)) {
        return refused("control characters are refused");
    }
    if (asked.is_secret() && asked.value && !asked.value->empty() &&
        asked.value->find_first_not_of('*') == std::string::npos) {
        return refused("asterisks stand in the place of a password that is not shown");
    }
    return true;
}

void RequestReader::add(const Raw& raw) {
    Asked asked{.section = raw.section, .key = raw.key, .value = {}};
    if (has_control(asked.section) || has_control(asked.key.value_or(""))) {
        complain(raw.source, NotGood, name_of(asked) + ": control characters are refused");
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
        complain(raw.source, NoSuchName, known_.no_such(asked.section, asked.key));
        return;
    }
    const std::string name = folded(asked.section, asked.key.value_or("\n"));
    if (!named_.insert(name).second) {
        complain(raw.source, WrongCall, name_of(asked) + " is named twice");
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
    if (const char* section = known_.role_section()) {
        add({.section = section, .key = name, .typed = operand.substr(equal + 1)});
    } else if (dot == name.npos) {
        complain("", WrongCall, '"' + name + "\" is no name of an entry: Section.Key is wanted");
    } else {
        add({.section = name.substr(0, dot),
             .key = name.substr(dot + 1),
             .typed = operand.substr(equal + 1)});
    }
}

void RequestReader::add_deletion(const std::string& name) {
    const std::size_t dot = name.find('.');
    if (const char* section = known_.role_section()) {
        add({.section = section, .key = name});
    } else if (dot == name.npos) {
        add({.section = name, .key = std::nullopt});
    } else {
        add({.section = name.substr(0, dot), .key = name.substr(dot + 1)});
    }
}

void RequestReader::add_fragment(const std::string& source, const std::string& text) {
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        const std::string place = source + ':' + std::to_string(piece->line);
        if (piece->piece == Piece::Entry) {
            const Entry entry{piece->section, 0, piece->key, piece->line, piece->rest};
            add({.source = place,
                 .section = piece->section,
                 .key = std::string(piece->key),
                 .entry = &entry});
        } else if (piece->piece != Piece::Header) {
            complain(place, NotGood,
                     !piece->has_section ? "an entry stands behind the header of its section"
                                         : "is neither an entry (Key = value) nor a header");
        }
    }
}

void RequestReader::add_json(const std::string& source, const std::string& text) {
    std::string why;
    const auto entries = entries_of_json(text, why);
    if (!entries) {
        complain(source, NotGood, why);
        return;
    }
    std::size_t number = 0;
    for (const JsonEntry& entry : *entries) {
        const std::string place = source + ": entry " + std::to_string(++number);
        const char* section = entry.section ? entry.section->c_str() : known_.role_section();
        if (!section) {
            complain(place, NotGood, "lacks \"section\"");
            continue;
        }
        if (!entry.key && !std::holds_alternative<std::monostate>(entry.value)) {
            complain(place, NotGood, "a section has no value: it can be deleted by null");
            continue;
        }
        add({.source = place, .section = section, .key = entry.key, .typed = entry.value});
    }
}

Request RequestReader::take() {
    // The right goes under its older name, too, which would be read then.
    const RightRow& excluded = row_of(Right::ExcludeGroup);
    for (std::size_t i = 0; i < request_.asked.size(); ++i) {
        Asked older = request_.asked[i];
        if (older.known && older.known->rules == &excluded && !older.value &&
            named_.insert(folded(older.section, OldExcludeGroup)).second) {
            older.key = OldExcludeGroup;
            request_.asked.push_back(std::move(older));
        }
    }
    // A section that goes as a whole leaves nothing to be said of its keys.
    for (const Asked& asked : request_.asked) {
        if (asked.key && named_.contains(folded(asked.section, "\n"))) {
            complain("", WrongCall, name_of(asked) + " and its whole section are named");
            break;
        }
    }
    return std::move(request_);
}

int Asked::mode() const {
    return known ? known->mode() : LineMode;
}

std::string name_of(const Asked& asked) {
    return asked.key ? asked.section + '.' + *asked.key : asked.section;
}

Request read_request(const Options& options, const std::optional<RightsOf>& whose) {
    RequestReader reader(whose, options.unknown);
    for (const std::string& operand : options.operands) {
        if (operand.find('=') != operand.npos) {
            reader.add_operand(operand);
            continue;
        }
        const bool is_input = operand == "-";
        const std::string source = is_input ? "standard input" : operand;
        const Fd file = is_input ? Fd(::dup(STDIN_FILENO)) : open_file(operand.c_str(), O_RDONLY);
        const auto text = file ? read_whole(file.get()) : std::nullopt;
        if (!text) {
            reader.complain(source, NotOpened, why_not_opened());
        } else if (options.json) {
            reader.add_json(source, *text);
        } else {
            reader.add_fragment(source, *text);
        }
    }
    for (const std::string& name : options.deleted) {
        reader.add_deletion(name);
    }
    return reader.take();
}

} // namespace ov::ctl
