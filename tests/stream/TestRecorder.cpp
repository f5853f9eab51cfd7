// A function plug-in that writes each batch, as one line of its details' keys and numbers, to the
// file that its registry key "File" names. A FIFO that nobody reads blocks it, and then there is a
// file FIFO.blocked.
#include "BAS/RegistryEntry.h"
#include "EDR/Container.h"
#include "EDR/Factory.h"
#include "PLG/FunctionPlugIn.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

class Recorder : public PLG::FunctionPlugIn {
public:
    explicit Recorder(BAS::String const& name) : FunctionPlugIn(name, "1") {
        keyM = edrFactoryM->getIndex(name, "DETAIL.KEY", "", "");
        numberM = edrFactoryM->getIndex(name, "DETAIL.NUMBER", "", "");
        isValidM = true;
    }

    // In one write, so that a killed process leaves whole batches only.
    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override {
        std::string line;
        for (std::size_t i = 0; i < batch.entries(); ++i) {
            line +=
                batch[i]->getString(keyM).str() + ":" + batch[i]->getString(numberM).str() + " ";
        }
        line += "\n";
        int const file = opened(registry()->find("File")->value().str());
        bool const isWritten =
            ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
        ::close(file);
        return isWritten;
    }

private:
    static int opened(std::string const& name) {
        constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
        if (int const file = ::open(name.c_str(), flags | O_NONBLOCK, 0644); file >= 0) {
            return file;
        }
        ::close(::open((name + ".blocked").c_str(), flags, 0644));
        return ::open(name.c_str(), flags, 0644);
    }

    EDR::Index keyM;
    EDR::Index numberM;
};

} // namespace

extern "C" BAS::RegisteredObject* TestRecorderModuleStart(BAS::String const& name) {
    return new Recorder(name);
}
