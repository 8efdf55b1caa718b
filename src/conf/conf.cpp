#include "conf/conf.h"

#include "conf/aux_sections.h"
#include "conf/layout.h"
#include "conf/loader.h"
#include "conf/rights.h"
#include "conf/settings.h"
#include "util/log.h"

#include <cstdlib>
#include <unistd.h>

namespace ov {

namespace {

// Loads what the file's scan has found, and then the local supplement.
void load_scanned(const Snapshot& snapshot, const char* file, unsigned mask) {
    if (!(mask & (RC_LOCALPASS | RC_AUXONLY))) {
        load_rows(snapshot, file, mask, MainReader);
    }
    if (mask & (RC_MANAGE | RC_BROWSE)) {
        read_rights(snapshot, file, "Admin", 0);
        read_rights(snapshot, file, "Manager", 1);
    }
    if (mask & (RC_RECEIVE | RC_MANAGE)) {
        load_rows(snapshot, file, mask, CypherReader);
    }
    if (mask & (RC_RECEIVE | RC_TRANSFER)) {
        load_rows(snapshot, file, mask, TransferReader);
    }
    // A relative one has not been looked for; the working directory is not the place to do so.
    if ((mask & RC_LOCALPASS) || !isfullpath(LocalConfFile.c_str())) {
        return;
    }
    const std::string local(LocalConfFile.view());
    if (const Snapshot* supplement = scan(local.c_str(), FileKind::Regular)) {
        load_scanned(*supplement, local.c_str(), mask | RC_LOCALPASS);
    }
}

} // namespace

void read_config(const char* file, unsigned mask) {
    const Snapshot* snapshot = scan_for_loading(file);
    if (!snapshot) {
        std::exit(EXIT_FAILURE);
    }
    load_scanned(*snapshot, file, mask);
}

void setconfig(const char* file, unsigned mask, int rank, const char* user) {
    read_config(file, mask);
    log_init();
    std::string path;
    std::string section;
    if (user && rank != NoRole && access_cffile(rank, user, path, &section) == 0 &&
        ::access(path.c_str(), R_OK) == 0) {
        read_config_user(path.c_str(), section.c_str(), rank);
    }
}

int conf_free() {
    InternalDomains.reset();
    for (IpList* list : {&SMTP_DenyIP, &SMTP_AllowIP, &CM_DenyIP, &CM_AllowIP, &CM_ExcludeIP,
                         &CM_LocalIP, &CM_ClientIP}) {
        list->reset();
    }
    for (WordList* list : {&CM_DenyFromAddress, &CM_ClientFROM, &CR_DenyRcptAddress,
                           &CR_AllowFromAddress, &CR_AllowRcptAddress, &CR_AllowRcptDomain}) {
        list->reset();
    }
    for (PerRole<WordList>* lists : {&CF_Group, &CF_ExcludeGroup, &CF_SelectGroup}) {
        lists->fill(std::nullopt);
    }
    forget_scans();
    return 0;
}

} // namespace ov
