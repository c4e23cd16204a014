// The service manager. This host runs no services. A handle only shows that the user may manage
// services.
#include <windows.h>

#include <unistd.h>
#include <winsvc.h>

#include "base/handles.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

class ServiceManager : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kServiceManager;
    ServiceManager() : HandleObject(kKind) {}
};

SC_HANDLE Refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

}  // namespace

SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD /*access*/) {
    if (!ViewOf(machine).empty()) return Refuse(RPC_S_SERVER_UNAVAILABLE);
    const WideView active = ViewOf(database);
    if (!active.empty() && !SameFileName(active, u"ServicesActive")) {
        return Refuse(ERROR_DATABASE_DOES_NOT_EXIST);
    }
    if (geteuid() != 0) return Refuse(ERROR_ACCESS_DENIED);
    return static_cast<SC_HANDLE>(OpenHandle(std::make_unique<ServiceManager>()));
}

BOOL CloseServiceHandle(SC_HANDLE object) {
    const HandlePin<ServiceManager> manager(object);
    return manager && CloseOpenHandle(object);
}
