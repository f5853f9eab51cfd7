// A function plug-in that counts what it gets and writes it to its trace. With the registry key
// "Gate", the path of a FIFO, each batch takes a byte from there before it goes on. It can't start
// without the EDR fields of the key "Fields", and can without those of "Wished".
#include "Trace.h"

#include "BAS/ProtectedBool.h"
#include "EDR/Container.h"
#include "EDR/Factory.h"
#include "PLG/FunctionPlugIn.h"

#include <memory>

namespace {

class Counter : public PLG::FunctionPlugIn {
public:
    explicit Counter(BAS::String const& name) : FunctionPlugIn(name, "1") {
        if (!traceM.step("build")) {
            setStatus("ERR_REG_ENTRY_NOT_FOUND", BAS::Status::critical, "SomeKey", true);
            isValidM = false;
        }
        try {
            askForFields("Fields");
        } catch (BAS::Status const& status) {
            setStatus(status, true);
            isValidM = false;
        }
        try {
            askForFields("Wished");
        } catch (BAS::Status const&) {
        }
    }
    ~Counter() override { traceM.note("destroy"); }

    bool init() override { return traceM.step("init"); }
    bool finalInit() override { return traceM.step("finalInit"); }
    bool install() override { return traceM.step("install"); }
    bool startup() override { return traceM.step("startup"); }
    bool shutdown() override { return traceM.step("shutdown"); }
    bool uninstall() override { return traceM.step("uninstall"); }

    bool isUsable() override {
        traceM.throwAt("isUsable");
        return FunctionPlugIn::isUsable();
    }
    bool isActive() const override { return traceM.step("isActive"); }

    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override {
        if (traceM.has("Gate")) {
            traceM.passGate();
        }
        countM += batch.entries();
        traceM.throwAt("batch " + std::to_string(++batchesM));
        for (std::size_t i = 0; i < batch.entries(); ++i) {
            traceM.throwAt("record " + std::to_string(batch[i]->recordKind()));
        }
        return traceM.step("batch", " of " + std::to_string(batch.entries()));
    }

    // Works on the key "Count"; an update with the key "Refuse" is rejected with a status. "Write"
    // names a file to write, of so many "Lines", which "Hold" leaves open. "Throw" throws, "Wait"
    // passes the gate, "Number" comes into the trace.
    bool registryUpdate(BAS::RegistryEntry const* update, BAS::ProtectedBool& workDone) override {
        if (update->find("Count") != nullptr) {
            workDone.set(true);
        }
        if (auto const* const file = update->find("Write")) {
            write(*update, file->value().str());
        }
        if (update->find("Throw") != nullptr) {
            throw std::runtime_error("thrown by a command");
        }
        if (update->find("Refuse") != nullptr) {
            setStatus("ERR_REG_VALUE_INVALID", BAS::Status::error, "Refuse", true);
            return false;
        }
        if (update->find("Wait") != nullptr) {
            traceM.passGate();
        }
        if (auto const* const number = update->find("Number")) {
            traceM.note("number " + number->value().str());
        }
        traceM.step("update", " after " + std::to_string(countM));
        return true;
    }

private:
    void askForFields(char const* key) const {
        auto const paths = BAS::String(traceM.value(key)).split(',');
        for (std::size_t i = 0; i < paths.entries() && traceM.has(key); ++i) {
            edrFactoryM->getIndex("TestCounter", paths[i], "", "");
        }
    }

    void write(BAS::RegistryEntry const& update, std::string const& file) {
        long lines = 1;
        if (auto const* const given = update.find("Lines")) {
            given->value().toNum(lines);
        }
        auto stream = std::make_unique<std::ofstream>(file);
        for (long i = 0; i < lines; ++i) {
            *stream << "written\n";
        }
        if (update.find("Hold") != nullptr) {
            *stream << std::flush;
            heldM = std::move(stream);
        }
    }

    Trace traceM{*this};
    std::unique_ptr<std::ofstream> heldM;
    std::size_t countM = 0;
    std::size_t batchesM = 0;
};

} // namespace

extern "C" BAS::RegisteredObject* TestCounterModuleStart(BAS::String const& name) {
    Trace(BAS::RegisteredObject(name)).throwAt("entry");
    return new Counter(name);
}
