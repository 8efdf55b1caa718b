#include "conf/conf.h"

#include "conf/aux_sections.h"
#include "conf/loader.h"
#include "conf/settings.h"
#include "util/log.h"

#include <cstdlib>
#include <unistd.h>

namespace ov {

void read_config(const char* file, unsigned mask) {
    const Snapshot* snapshot = scan_for_loading(file);
    if (!snapshot) {
        std::exit(EXIT_FAILURE);
    }
    if (!(mask & (RC_LOCALPASS | RC_AUXONLY))) {
        load_rows(*snapshot, file, mask, MainReader);
    }
    if (mask & (RC_RECEIVE | RC_MANAGE)) {
        read_config_cypher(file, mask);
    }
    if (mask & (RC_RECEIVE | RC_TRANSFER)) {
        read_config_transfer(file, mask);
    }
    if (mask & RC_LOCALPASS) {
        return;
    }
    if (LocalConfFile && ::access(LocalConfFile.c_str(), R_OK) == 0) {
        const std::string local(LocalConfFile.view());
        read_config(local.c_str(), mask | RC_LOCALPASS);
    }
}

void setconfig(const char* file, unsigned mask, [[maybe_unused]] int rank,
               [[maybe_unused]] const char* user) {
    read_config(file, mask);
    log_init();
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
    forget_scans();
    return 0;
}

} // namespace ov
