#include "addr/addr_list.h"

#include "util/log.h"
#include "util/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace ov {

AddressList addrs_freelist;

namespace {

constexpr std::size_t WorkSize = 1024; // one address, its terminators included
constexpr int MostSpecifications = 9999;
constexpr std::size_t MostExamined = 1023;

// Takes one address specification apart, character by character.
class Extraction {
  public:
    explicit Extraction(std::string_view in) : in_(in) {}

    // Reads to the end of the address. Returns whether it is well formed.
    bool run() {
        while (state_ != State::Finished && used_ < WorkSize - 1) {
            step(take());
        }
        return !error_;
    }

    // The address: what has been stored, up to the first terminator.
    std::string_view text() const {
        // The last character is the one that ended the address, or that was one too many.
        return c_text({work_.data(), used_ > 0 ? used_ - 1 : 0});
    }
    std::size_t position() const { return position_; }

  private:
    enum class State { Normal, Quoted, Comment, Finished };

    // The next character; the end of the text reads as NUL.
    char take() {
        const char c = position_ < in_.size() ? in_[position_] : '\0';
        ++position_;
        return c;
    }

    void store(char c) { work_[used_++] = c; }
    void take_back() { used_ -= used_ > 0; }

    void fail() {
        error_ = true;
        state_ = State::Finished;
    }

    void step(char c) {
        switch (state_) {
        case State::Normal:
            store(c);
            normal(c);
            break;
        case State::Quoted:
            store(c);
            quoted(c);
            break;
        case State::Comment:
            comment(c);
            break;
        case State::Finished:
            break;
        }
    }

    void normal(char c) {
        switch (c) {
        case '\0':
        case ',':
            error_ = angle_depth_ != 0;
            state_ = State::Finished;
            break;
        case '\t':
        case '\n':
        case ' ':
            take_back();
            break;
        case '"':
            state_ = State::Quoted;
            break;
        case '(':
            take_back();
            ++comment_depth_;
            state_ = State::Comment;
            break;
        case '<': // what stood before it was the display name
            ++angle_depth_;
            used_ = 0;
            break;
        case '>': // hides what is written between it and the end of the address
            if (--angle_depth_ < 0) {
                fail();
            } else {
                work_[used_ - 1] = '\0';
            }
            break;
        case '\\':
            escaped();
            break;
        default:
            break;
        }
    }

    void quoted(char c) {
        switch (c) {
        case '\0':
            fail();
            break;
        case '\n':
            take_back();
            break;
        case '"':
            state_ = State::Normal;
            break;
        case '\\':
            escaped();
            break;
        default:
            break;
        }
    }

    void comment(char c) {
        switch (c) {
        case '\0':
            fail();
            break;
        case '(':
            ++comment_depth_;
            break;
        case ')':
            if (--comment_depth_ == 0) {
                state_ = State::Normal;
            }
            break;
        case '\\': // the escaped character reaches the address all the same
            escaped();
            break;
        case '\n': // takes back a character, though the comment has stored none
            take_back();
            break;
        default:
            break;
        }
    }

    // The character behind a backslash is stored as it is.
    void escaped() {
        if (used_ == WorkSize - 1) {
            return; // the backslash was one character too many
        }
        const char c = take();
        if (c == '\0' || c == '\n') {
            fail();
        } else {
            store(c == '_' ? ' ' : c);
        }
    }

    std::string_view in_;
    std::size_t position_ = 0;
    State state_ = State::Normal;
    bool error_ = false;
    int angle_depth_ = 0;
    int comment_depth_ = 0;
    std::array<char, WorkSize> work_;
    std::size_t used_ = 0;
};

std::string_view trim(std::string_view text, std::string_view characters) {
    const std::size_t start = text.find_first_not_of(characters);
    if (start == text.npos) {
        return {};
    }
    return text.substr(start, text.find_last_not_of(characters) - start + 1);
}

bool has_none_of(std::string_view text, std::string_view characters) {
    return text.find_first_of(characters) == text.npos;
}

bool is_domain(std::string_view domain, int mode) {
    if (mode >= AddressStrict) {
        return std::all_of(domain.begin(), domain.end(), is_name_character);
    }
    return has_none_of(domain, mode == AddressPlain ? "*?#$%&@:;[]!" : "?#$%&@:;[]!");
}

bool is_local_part(std::string_view local, int mode) {
    if (mode >= AddressStrict) {
        return std::all_of(local.begin(), local.end(), is_name_character);
    }
    return has_none_of(local, mode == AddressPlain ? "*?#$%&@:;[]" : "#:");
}

} // namespace

AddressList alloc_ADDRS(std::optional<std::string_view> text) {
    AddressList cell;
    try {
        if (addrs_freelist) {
            cell = std::move(addrs_freelist);
            addrs_freelist = std::move(cell->next);
        } else {
            cell = std::make_unique<ADDRS>();
        }
        if (text) {
            cell->str.emplace(*text);
        }
        return cell;
    } catch (const std::bad_alloc&) {
        syserr("%s: ERROR: malloc failed (%d): %s %d", "alloc_ADDRS", errno, __FILE_NAME__,
               __LINE__);
        free_ADDRS(std::move(cell));
        return nullptr;
    }
}

void free_ADDRS(AddressList list) {
    while (list) {
        AddressList rest = std::move(list->next);
        list->str.reset();
        list->next = std::move(addrs_freelist);
        addrs_freelist = std::move(list);
        list = std::move(rest);
    }
}

std::optional<std::string_view> ag_get_addrspec(std::optional<std::string_view> in,
                                                std::string& out, std::size_t size) {
    if (!in) {
        return std::nullopt;
    }
    out.clear();
    std::string_view rest = c_text(*in);
    rest.remove_prefix(std::min(rest.find_first_not_of(", \t\n\v\f\r_"), rest.size()));
    Extraction extraction(rest);
    if (!extraction.run() || extraction.text().empty()) {
        return std::nullopt;
    }
    out = trim(extraction.text(), " _").substr(0, size > 0 ? size - 1 : 0);
    if (extraction.position() >= rest.size()) {
        return std::nullopt;
    }
    return rest.substr(extraction.position());
}

bool append_addresses(AddressList* list, std::optional<std::string_view> line) {
    AddressList* tail = list;
    while (*tail) {
        tail = &(*tail)->next;
    }
    std::string address;
    std::optional<std::string_view> rest = line;
    for (int extractions = 0; rest && extractions < MostSpecifications; ++extractions) {
        rest = ag_get_addrspec(rest, address, WorkSize);
        if (address.empty()) {
            continue;
        }
        *tail = alloc_ADDRS(address);
        if (!*tail) {
            return false;
        }
        tail = &(*tail)->next;
    }
    return true;
}

AddressList addr_list(std::optional<std::string_view> line) {
    AddressList list;
    if (!append_addresses(&list, line)) {
        free_ADDRS(std::move(list));
        return nullptr;
    }
    return list;
}

int isvalid_address(const char* text, int mode) {
    if (!text || !*text) {
        return 0;
    }
    std::string_view address(text);
    if (mode >= AddressStrict && !std::all_of(address.begin(), address.end(), is_printable)) {
        return 0;
    }
    address = address.substr(0, MostExamined);
    if (address.front() == '<') {
        address.remove_prefix(1);
        address = address.substr(0, address.rfind('>'));
    }
    if (address.empty()) {
        return 0;
    }
    const std::size_t at = address.rfind('@');
    if (at != address.npos && !is_domain(address.substr(at + 1), mode)) {
        return 0;
    }
    return is_local_part(address.substr(0, at), mode);
}

} // namespace ov
