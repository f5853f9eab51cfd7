// The base of data modules that hold what they load in one object of the class Data and can replace
// it while the host runs. Base is what clients see, such as DAT::Rating::PricePlugIn. A module
// defines load, calls loadFirst in its constructor and answers from data():
//
//     class Prices : public DAT::ReloadablePlugIn<DAT::Rating::PricePlugIn, PriceTable> {
//     public:
//         explicit Prices(BAS::String const& name) : ReloadablePlugIn(name, "1") { loadFirst(); }
//         void getDataDump(...) override { ... data() ... }
//     private:
//         void load(DAT::LoadSession& session, PriceTable& data,
//                   DAT::LoadReport& report) const override;
//     };
#pragma once

#include "BAS/RegisteredObject.h"
#include "DAT/LoadSession.h"
#include "DAT/Reloadable.h"

#include <memory>
#include <mutex>
#include <utility>

namespace DAT {

template <class Base, class Data>
class ReloadablePlugIn : public Base, public Reloadable {
public:
    std::unique_ptr<NewData> readNewData(LoadSession& session) final {
        return std::make_unique<ReadData>(*this, readData(session));
    }
    LoadReport loadReport() const final {
        std::lock_guard const guard(reportLockM);
        return loadedM->report;
    }
    void recordReload(BAS::Status const& status) final { this->setStatus(status, true); }

protected:
    ReloadablePlugIn(BAS::String const& name, BAS::String const& version) : Base(name, version) {}

    // Fills new data from the module's source, and the report's source and tables. Throws a
    // BAS::Status when it can't. Any thread, while others read data().
    virtual void load(LoadSession& session, Data& data, LoadReport& report) const = 0;

    // Loads and logs what was loaded, or leaves the module invalid with the status that load threw.
    void loadFirst();
    // Leaves the module invalid with that status.
    void fail(BAS::Status const& status);

    // The same object until the next command at the earliest.
    Data const& data() const noexcept { return loadedM->data; }

private:
    struct Loaded {
        Data data;
        LoadReport report;
    };

    class ReadData : public NewData {
    public:
        ReadData(ReloadablePlugIn& module, std::unique_ptr<Loaded> loaded)
            : moduleM(module), loadedM(std::move(loaded)) {}
        LoadReport const& report() const noexcept override { return loadedM->report; }
        void takeOver() noexcept override {
            std::lock_guard const guard(moduleM.reportLockM);
            moduleM.loadedM.swap(loadedM);
        }

    private:
        ReloadablePlugIn& moduleM;
        std::unique_ptr<Loaded> loadedM;
    };

    std::unique_ptr<Loaded> readData(LoadSession& session) const;

    mutable std::mutex reportLockM; // of loadedM against loadReport
    std::unique_ptr<Loaded> loadedM = std::make_unique<Loaded>();
};

template <class Base, class Data>
auto ReloadablePlugIn<Base, Data>::readData(LoadSession& session) const -> std::unique_ptr<Loaded> {
    auto loaded = std::make_unique<Loaded>();
    auto const begin = std::chrono::steady_clock::now();
    loaded->report.time = std::chrono::system_clock::now();
    load(session, loaded->data, loaded->report);
    loaded->report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return loaded;
}

template <class Base, class Data>
void ReloadablePlugIn<Base, Data>::loadFirst() {
    try {
        LoadSession session;
        loadedM = readData(session);
        auto status = loadedStatus(loadedM->report);
        status.setObjectName(this->name());
        this->writeLog(status);
    } catch (BAS::Status const& status) {
        fail(status);
    }
}

template <class Base, class Data>
void ReloadablePlugIn<Base, Data>::fail(BAS::Status const& status) {
    this->setStatus(status, true);
    std::lock_guard const guard(this->isValidLockerCM);
    this->isValidM = false;
}

} // namespace DAT
