// A data module whose data can be replaced while its clients go on. The host asks each module of a
// reload for its new data first, in a thread of its own, and has all of them take the new data over
// when no client is at work, so that nobody sees a part of the old and a part of the new.
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

// What a table, or a file, gave.
struct LoadedTable {
    BAS::String name;
    std::size_t rows = 0;     // that are held
    std::size_t rejected = 0; // that were left out
};

// When and where data were loaded.
struct LoadReport {
    std::chrono::system_clock::time_point time; // at which reading began
    double seconds = 0;                         // that it took
    BAS::String source;                         // without secrets
    std::vector<LoadedTable> tables;

    std::size_t rows() const noexcept;
    std::size_t rejected() const noexcept;
};

// The report as a message: rows, rejected rows, source, seconds, the tables and the time.
BAS::Status loadedStatus(LoadReport const& report);

// New data on their way to their module. They may be dropped at any time.
class NewData {
public:
    virtual ~NewData();
    NewData(NewData const&) = delete;
    NewData& operator=(NewData const&) = delete;

    virtual LoadReport const& report() const noexcept = 0;
    // Exchanges them with what the module holds; the old data go with this object. Once, and while
    // nobody else uses the module.
    virtual void takeOver() noexcept = 0;

protected:
    NewData() = default;
};

class Reloadable {
public:
    virtual ~Reloadable();

    // Reads everything anew; what the module holds stays as it is. Any thread, one at a time.
    // Throws a BAS::Status when something can't be read.
    virtual std::unique_ptr<NewData> readNewData(LoadSession& session) = 0;
    // Of the data that the module holds. Any thread.
    virtual LoadReport loadReport() const = 0;
    // What became of a reload; the module keeps it as its status and logs it.
    virtual void recordReload(BAS::Status const& status) = 0;
};

} // namespace DAT
