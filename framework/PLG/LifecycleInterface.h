// The second interface of a plug-in, through which a host installs, starts and stops it without
// knowing its class. The order of the virtual operations is fixed: plug-ins that were built
// elsewhere depend on it.
#pragma once

namespace PLG {

class LifecycleInterface {
public:
    virtual ~LifecycleInterface() = default;
    // Each returns whether it succeeded.
    virtual bool install() = 0;
    virtual bool uninstall() = 0;
    virtual bool startup() = 0;
    virtual bool shutdown() = 0;

protected:
    LifecycleInterface() = default;
    LifecycleInterface(LifecycleInterface const&) = delete;
    LifecycleInterface& operator=(LifecycleInterface const&) = delete;
};

} // namespace PLG
