// The registered object "<root>.DataPool": its command Reload is for all data modules that can be
// reloaded. The modules stay the host's.
#pragma once

#include "BAS/RegisteredObject.h"
#include "run/Reloader.h"

namespace host {

class DataPool : public BAS::RegisteredObject {
public:
    using RegisteredObject::RegisteredObject;

    void add(ReloadableModule module) { modulesM.push_back(std::move(module)); }
    std::vector<ReloadableModule> const& modules() const noexcept { return modulesM; }

    // Keeps the status and logs it.
    void recordReload(BAS::Status const& status) { setStatus(status, true); }

private:
    std::vector<ReloadableModule> modulesM;
};

} // namespace host
