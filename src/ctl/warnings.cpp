#include "ctl/warnings.h"

#include "catalogue/rights.h"
#include "catalogue/settings.h"
#include "conf/layout.h"
#include "ctl/trial.h"
#include "reference/names.h"
#include "reference/text.h"
#include "util/paths.h"

#include <algorithm>
#include <map>
#include <set>

namespace ov::ctl {

namespace {

// Looks at one file.
class Inspector {
  public:
    Inspector(const Document& document, bool is_supplement, const Survey& survey)
        : document_(document), text_(document.text), is_supplement_(is_supplement),
          survey_(survey) {}

    std::vector<Finding> run();

  private:
    bool has_mark() const { return text_.starts_with("\xef\xbb\xbf"); }
    Finding& add(const char* code, int line, std::string message);
    void look_at_encoding();
    void look_at(const LaidOut& piece);
    void look_at_header(const LaidOut& header);
    void look_at_entry(const LaidOut& entry);
    void look_at_known(const LaidOut& entry, int number);
    void look_at_unread(const Finding& where, const Row& row);

    const Document& document_;
    std::string_view text_;
    bool is_supplement_;
    const Survey& survey_;
    std::vector<Finding> found_;
    std::set<std::string> unknown_sections_;  // that have been named
    std::map<int, int> taken_;                // keys by their numbers: the lines of their values
    int last_line_ = 0;                       // of the piece before
    bool is_behind_ = false;                  // a piece on its line
    static constexpr std::size_t Most = 1000; // warnings of a code: more tell nothing new
    std::map<std::string_view, std::size_t> told_;
    std::size_t left_out_ = 0;
    Finding left_out_finding_; // the last one of them
};

Finding& Inspector::add(const char* code, int line, std::string message) {
    if (++told_[code] > Most) {
        ++left_out_;
        left_out_finding_ = {};
        return left_out_finding_;
    }
    found_.push_back(
        {.code = code, .file = document_.path, .line = line, .message = std::move(message)});
    return found_.back();
}

void Inspector::look_at_encoding() {
    if (has_mark()) {
        add("byte-order-mark", 1,
            "the file begins with a byte order mark, and what stands on the first line is not "
            "read");
    }
    if (const std::size_t at = text_.find('\r'); at != text_.npos) {
        const auto lines = std::count(text_.begin(), text_.end(), '\r');
        const auto line =
            1 + std::count(text_.begin(), text_.begin() + static_cast<long>(at), '\n');
        add("carriage-return", static_cast<int>(line),
            "carriage returns are part of the values: " + std::to_string(lines) +
                " in the file, the first one here");
    }
    if (const std::size_t at = text_.find('\0'); at != text_.npos) {
        add("nul-byte",
            1 + static_cast<int>(
                    std::count(text_.begin(), text_.begin() + static_cast<long>(at), '\n')),
            "values end at a NUL byte, of which the first one stands here");
    }
    if (!text_.empty() && text_.back() != '\n') {
        add("no-line-end", 1 + static_cast<int>(std::count(text_.begin(), text_.end(), '\n')),
            "the last line does not end with a line feed");
    }
}

void Inspector::look_at_header(const LaidOut& header) {
    if (is_known_section(header.section) ||
        !unknown_sections_.insert(lowered(header.section)).second) {
        return;
    }
    add("unknown-section", header.line,
        "unknown section" + did_you_mean(nearest(header.section, section_names())))
        .section = header.section;
}

// Whether the token mode leaves text behind the value.
bool has_trailing_text(std::string_view rest) {
    Source source(rest);
    next_token(source);
    const Token token = next_token(source);
    return token != TokenEol && token != TokenEof;
}

// A value that no reader wants is tried all the same.
void Inspector::look_at_unread(const Finding& where, const Row& row) {
    const std::string reason = refusal_of(row, where.value);
    if (!reason.empty()) {
        Finding& finding =
            add("unread-invalid", where.line, "is not read now, and would be refused: " + reason);
        finding.section = where.section;
        finding.key = where.key;
        finding.value = where.value;
    }
}

void Inspector::look_at_known(const LaidOut& entry, int number) {
    const Row* row = find_row(entry.section, entry.key);
    const Columns* columns = row ? static_cast<const Columns*>(row) : find_right(entry.key);
    const bool by_token = columns && manner_of(columns->load).mode == TokenMode;
    const Entry as_read{entry.section, 0, entry.key, entry.line, entry.rest};
    const auto value = by_token ? token_value(as_read) : std::optional(line_value(as_read));
    const auto say = [&](const char* code, std::string message) {
        Finding& finding = add(code, entry.line, std::move(message));
        finding.section = entry.section;
        finding.key = entry.key;
        finding.value = row && row->secret ? "" : value.value_or("");
    };
    if (!value) {
        say("no-value", "a bracket or \"=\" is no value: the entry is not read");
        return;
    }
    const auto [taken, is_first] = taken_.try_emplace(number, entry.line);
    if (!is_first) {
        say("hidden", "the entry on line " + std::to_string(taken->second) + " is read instead");
        return;
    }
    if (row && std::string_view(key_of(*row)) == "ForwardMode" && ForwardMode == 0 &&
        !ForwardMailAddress && survey_.keys[number_of(*row)] && !same_word(*value, "none")) {
        say("no-forward-address", "counts as none, because ForwardMailAddress is not set");
    }
    if (by_token && has_trailing_text(entry.rest)) {
        say("trailing-text", "the text behind the value is not read");
    }
    if (is_supplement_ && row && !is_read_from_supplement(*row)) {
        say("unread-key", "is read from the main file only");
    } else if (!is_supplement_ && row && survey_.unread[number_of(*row)]) {
        look_at_unread({.code = "",
                        .file = {},
                        .line = entry.line,
                        .section = entry.section,
                        .key = std::string(entry.key),
                        .value = std::string(*value),
                        .message = {}},
                       *row);
    }
}

void Inspector::look_at_entry(const LaidOut& entry) {
    const std::size_t end = entry.rest.find_last_not_of(" \t") + 1;
    if (end > MaxText || entry.key.size() > MaxText) {
        Finding& finding = add("long-line", entry.line,
                               "is cut: of what stands behind the \"=\" " +
                                   std::to_string(MaxText) + " bytes are read");
        finding.section = entry.section;
        finding.key = shortened(entry.key);
    }
    const int number = key_index().find(entry.section, entry.key);
    if (number != -1) {
        look_at_known(entry, number);
    } else if (is_known_section(entry.section)) {
        Finding& finding =
            add("unknown-key", entry.line,
                "unknown key" +
                    (told_["unknown-key"] >= Most ? "" : likely_key(entry.section, entry.key)));
        finding.section = entry.section;
        finding.key = shortened(entry.key);
    }
}

void Inspector::look_at(const LaidOut& piece) {
    is_behind_ = piece.line == last_line_;
    last_line_ = piece.line;
    const auto say = [&](const char* code, const char* message) {
        Finding& finding = add(code, piece.line, message);
        finding.section = piece.has_section ? piece.section : "";
        // Its first word: there may be a password behind that.
        const std::size_t end = text_.find_first_of(" \t=:\n", piece.begin + 1);
        finding.value = shortened(text_.substr(piece.begin, end - piece.begin));
    };
    if (is_behind_) {
        say("trailing-text", "stands behind a header on its line");
    }
    switch (piece.piece) {
    case Piece::Header:
        look_at_header(piece);
        break;
    case Piece::BrokenHeader:
        say("broken-header", "is no header: wanted is a name in brackets, one of digits in quotes");
        break;
    case Piece::Entry:
        look_at_entry(piece);
        break;
    default:
        if (!piece.has_section && has_mark()) {
            break; // it is the mark that hides the header
        }
        if (!piece.has_section) {
            say("before-section", "stands before the first section, and is not read");
        } else if (!is_behind_) {
            say("skipped-line", "is neither an entry (Key = value) nor a header, and is not read");
        }
    }
}

std::vector<Finding> Inspector::run() {
    look_at_encoding();
    Layout layout(text_);
    while (const std::optional<LaidOut> piece = layout.next()) {
        look_at(*piece);
    }
    std::stable_sort(found_.begin(), found_.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    if (left_out_ != 0) {
        found_.push_back({.code = "more-warnings",
                          .file = document_.path,
                          .value = std::to_string(left_out_),
                          .message = "more warnings of the same kinds are left out"});
    }
    return std::move(found_);
}

// Whether the supplement is among the errors.
bool is_refused(const Survey& survey) {
    return std::any_of(survey.errors.begin(), survey.errors.end(), [](const Finding& error) {
        return error.code == std::string_view("cannot-open");
    });
}

} // namespace

std::vector<Finding> warnings(const Document& document, const Survey& survey) {
    std::vector<Finding> found = Inspector(document, false, survey).run();
    const Row& local = *find_row("Files", "LocalConfFile");
    const Origin origin = survey.keys[number_of(local)];
    if (survey.supplement) {
        std::vector<Finding> more = Inspector(*survey.supplement, true, survey).run();
        std::move(more.begin(), more.end(), std::back_inserter(found));
    } else if (origin && !LocalConfFile.view().empty() && !is_refused(survey)) {
        found.push_back({.code = "unread-supplement",
                         .file = document.path,
                         .line = origin.line,
                         .section = "Files",
                         .key = "LocalConfFile",
                         .value = std::string(LocalConfFile.view()),
                         .message = isfullpath(LocalConfFile.c_str())
                                        ? "the supplement cannot be read"
                                        : "the supplement is not read without its full path"});
    }
    return found;
}

} // namespace ov::ctl
