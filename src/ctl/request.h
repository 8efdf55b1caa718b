// What is to be changed, as the caller of apply says it.
#pragma once

#include "ctl/known.h"
#include "ctl/options.h"
#include "ctl/rights_file.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ov::ctl {

// One thing that is asked for. Names are spelled as the catalogue spells them, where it knows them.
struct Asked {
    std::string section;
    std::optional<std::string> key;   // nothing: the whole section
    std::optional<std::string> value; // as a lookup shall give it; nothing: it goes
    std::optional<KnownKey> known = {};

    bool is_secret() const { return known && known->is_secret(); }
    // What nobody knows may be a password as well.
    bool is_masked() const { return !known || known->is_secret(); }
    // How a lookup reads the value.
    int mode() const;
};

// The name as people write it, for messages.
std::string name_of(const Asked& asked);

struct Request {
    std::vector<Asked> asked = {};
    std::vector<std::string> complaints = {}; // sentences that say why nothing can be done
    int status = Good;                        // the gravest one of those
};

// What a call asks for, collected bit by bit. The names are those of the main file, or, with
// `whose`, of a rights file. With `unknown` others are taken, too.
class RequestReader {
  public:
    RequestReader(const std::optional<RightsOf>& whose, bool unknown)
        : known_(whose), unknown_(unknown) {}

    // An argument "NAME=VALUE", and the name of what is to be deleted.
    void add_operand(const std::string& operand);
    void add_deletion(const std::string& name);
    // The entries of a text in the form of a configuration file, or of a JSON list. Messages call
    // it `source`.
    void add_fragment(const std::string& source, const std::string& text);
    void add_json(const std::string& source, const std::string& text);
    // Something else that is in the way.
    void complain(const std::string& source, int status, const std::string& message);

    Request take();

  private:
    struct Raw;
    void add(const Raw& raw);
    bool find_value(const Raw& raw, Asked& asked);

    KnownKeys known_;
    bool unknown_;
    std::set<std::string> named_; // keys, and sections that go as a whole
    Request request_;
};

// All that the call asks for: its operands, the fragments they name, and what is to be deleted.
Request read_request(const Options& options, const std::optional<RightsOf>& whose);

} // namespace ov::ctl
