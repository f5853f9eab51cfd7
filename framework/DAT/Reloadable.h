// A data module whose data can be replaced while the host runs. The host first reads the new data
// of all modules of a reload, in a thread of its own, and then has all of them take the new data
// over while no client runs, so that no client sees old and new data together.
// DAT::ReloadablePlugIn implements this for modules that hold their data in one object.
#pragma once

#include "BAS/Status.h"
#include "BAS/String.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

namespace DAT {

class LoadSession;

// What was loaded from a table or file.
struct LoadedTable {
    BAS::String name;
    std::size_t rows = 0;     // that are kept
    std::size_t rejected = 0; // that were left out
};

// When and where data were loaded.
struct LoadReport {
    std::chrono::system_clock::time_point time; // at which reading began
    double seconds = 0;
    BAS::String source; // without secrets
    std::vector<LoadedTable> tables;

    std::size_t rows() const noexcept;
    std::size_t rejected() const noexcept;
};

// The report as a message: rows, rejected rows, source, seconds, the tables and the time.
BAS::Status loadedStatus(LoadReport const& report);

// New data that their module hasn't taken over yet. They may be dropped at any time.
class NewData {
public:
    virtual ~NewData();
    NewData(NewData const&) = delete;
    NewData& operator=(NewData const&) = delete;

    virtual LoadReport const& report() const noexcept = 0;
    // Exchanges them with the module's data; this object destroys the old data. Once, and while
    // nobody else uses the module.
    virtual void takeOver() noexcept = 0;

protected:
    NewData() = default;
};

class Reloadable {
public:
    virtual ~Reloadable();

    // Reads new data; the module keeps its data. Any thread, one at a time. Throws a BAS::Status
    // when something can't be read.
    virtual std::unique_ptr<NewData> readNewData(LoadSession& session) = 0;
    // Of the module's present data. Any thread.
    virtual LoadReport loadReport() const = 0;
    // The outcome of a reload; the module keeps it as its status and logs it.
    virtual void recordReload(BAS::Status const& status) = 0;
};

} // namespace DAT
