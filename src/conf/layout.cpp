#include "conf/layout.h"

#include <algorithm>

namespace ov {

Entry entry_of(const LaidOut& piece) {
    return {piece.section, 0, piece.key, piece.line, piece.rest};
}

std::optional<LaidOut> Layout::next() {
    for (;;) {
        // An entry of the common form is taken with the end of the line in front of it.
        const std::size_t from = source_.position();
        const bool is_behind = from < text_.size() && text_[from] == '\n';
        const std::size_t begin = blanks_end(text_, is_behind ? from + 1 : from);
        Entry entry{};
        const Piece piece = scan_.next_piece(entry);
        if (piece == Piece::End) {
            return std::nullopt;
        }
        if (piece != Piece::EmptyLine) {
            const std::string_view passed = text_.substr(counted_, begin - counted_);
            line_ += static_cast<int>(std::count(passed.begin(), passed.end(), '\n'));
            counted_ = begin;
            return LaidOut{piece,
                           begin,
                           source_.position(),
                           line_,
                           std::string(scan_.section()),
                           scan_.section_seen(),
                           entry.key,
                           entry.rest};
        }
    }
}

} // namespace ov
