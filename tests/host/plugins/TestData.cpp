// A data module that holds the lines of the file that its registry key "File" names; a line "bad"
// is rejected. With the key "Gate", the path of a FIFO, each reload takes a byte from there before
// it reads, and with "Deaf" it waits for it even when it is to stop. Named "Nothing", it comes out
// as no object at all.
#include "Trace.h"

#include "DAT/ReloadablePlugIn.h"
#include "PLG/StdPlugIn.h"

#include <atomic>
#include <fstream>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

class Data : public DAT::ReloadablePlugIn<PLG::StdPlugIn, Lines> {
public:
    explicit Data(BAS::String const& name) : ReloadablePlugIn(name, "1") {
        traceM.step("build");
        loadFirst();
    }
    ~Data() override { traceM.note("destroy"); }

    bool startup() override { return traceM.step("startup"); }
    bool shutdown() override { return traceM.step("shutdown"); }

private:
    void load(DAT::LoadSession& session, Lines& lines, DAT::LoadReport& report) const override {
        if (isLoadedM.exchange(true) && traceM.has("Gate")) {
            traceM.passGate(traceM.has("Deaf") ? std::stop_token() : session.stop());
        }
        auto const* const file = registry() == nullptr ? nullptr : registry()->find("File");
        if (file == nullptr) {
            return;
        }
        report.source = file->value();
        DAT::LoadedTable table{"LINES"};
        std::ifstream in(file->value().str());
        if (!in) {
            throw BAS::Status("ERR_DATABASE", BAS::Status::error, "no file");
        }
        for (std::string line; std::getline(in, line);) {
            if (line == "bad") {
                ++table.rejected;
            } else {
                lines.push_back(line);
            }
        }
        table.rows = lines.size();
        report.tables.push_back(table);
    }

    Trace traceM{*this};
    mutable std::atomic<bool> isLoadedM{false};
};

} // namespace

extern "C" BAS::RegisteredObject* TestDataModuleStart(BAS::String const& name) {
    return name.view().ends_with(".Nothing.Module") ? nullptr : new Data(name);
}
