// A configuration file's text, piece by piece, with the place of each.
#pragma once

#include "conf/lookup.h"

#include <string>
#include <vector>

namespace ov {

// A piece of the text, from its first character to where the next one is looked for.
struct LaidOut {
    Piece piece;
    std::size_t begin;
    std::size_t end;
    int line;              // on which it begins, counted from 1
    std::string section;   // of an entry, or that a header has named; empty before the first one
    bool has_section;      // whether there has been a header
    std::string_view key;  // of an entry; it points into the text, as the rest does
    std::string_view rest; // behind its "="
};

// The piece, which is an entry, as readers of values have it.
Entry entry_of(const LaidOut& piece);

// The pieces in their order, but the empty lines.
class Layout {
  public:
    // `text` must outlive it.
    explicit Layout(std::string_view text) : text_(text), source_(text), scan_(source_) {}
    // Nothing at the end of the text.
    std::optional<LaidOut> next();

  private:
    std::string_view text_;
    Source source_;
    EntryScan scan_;
    int line_ = 1;
    std::size_t counted_ = 0; // characters whose line feeds are in `line_`
};

} // namespace ov
