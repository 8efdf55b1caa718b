// What is to be changed, as the caller of apply says it.
#pragma once

#include "ctl/findings.h"
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
    std::optional<std::string> key = {};   // nothing: the whole section, or the user
    std::optional<std::string> value = {}; // as a lookup shall give it; nothing: it goes
    std::optional<KnownKey> known = {};
    std::string user = {};  // whose rights are meant, where that is not said for all
    bool secret = false;    // the caller says so
    bool file_only = false; // the rights file is to be there, whatever is in it

    bool is_secret() const { return secret || (known && known->is_secret()); }
    // What nobody knows may be a password as well.
    bool is_masked() const { return !known || is_secret(); }
    // How a lookup reads the value.
    int mode() const;
};

struct Request {
    std::vector<Asked> asked = {};
    std::vector<Finding> complaints = {}; // why nothing can be done, with the fragment as the file
    int status = Good;                    // the highest one of those
};

// What a call asks for, collected bit by bit. The names are those of the main file, or, with
// `whose`, of a rights file; if that is no single user, each name has a user in the place of the
// section. With `unknown` others are taken, too.
class RequestReader {
  public:
    RequestReader(const std::optional<RightsOf>& whose, bool unknown)
        : known_(whose), by_user_(whose && whose->user.empty()), unknown_(unknown) {}

    // An argument "NAME=VALUE", and the name of what is to be deleted: "Section.Key" or "Section";
    // of a right, its key alone.
    void add_operand(const std::string& operand);
    void add_deletion(const std::string& name);
    // The entries of a text in the form of a configuration file, where a rights file needs no
    // header, or of a JSON list. What stands in neither form is complained of. Messages call it
    // `source`.
    void add_fragment(const std::string& source, const std::string& text);
    void add_json(const std::string& source, const std::string& text);
    // Something else that is in the way.
    void complain(int status, Finding why);

    Request take();

  private:
    struct Raw;
    void add(const Raw& raw);
    bool find_value(const Raw& raw, Asked& asked);

    KnownKeys known_;
    bool by_user_;
    bool unknown_;
    std::set<std::string> named_; // keys, and sections that go as a whole
    Request request_;
};

// All that the call asks for: its operands, the fragments they name, each of less than 64 MiB, and
// what is to be deleted. Of "-" standard input is read.
Request read_request(const Options& options, const std::optional<RightsOf>& whose);

} // namespace ov::ctl
