// A function plug-in that counts details by the value of one EDR field.
//
// Registry: Field, the path of the EDR field; mandatory.
// Commands: Report=FILE writes a line "VALUE COUNT" for each value; Clear begins anew.
#pragma once

#include "EDR/Index.h"
#include "PLG/FunctionPlugIn.h"

#include <cstdint>
#include <map>

namespace Example {

class CountByField final : public PLG::FunctionPlugIn {
public:
    explicit CountByField(BAS::String const& name);

    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override;
    bool registryUpdate(BAS::RegistryEntry const* update, BAS::ProtectedBool& workDone) override;

protected:
    bool readRegistry() override;
    bool setEDRContainerIndices() override;

private:
    bool writeReport(BAS::String const& file);

    BAS::String fieldNameM;
    EDR::Index fieldM;
    // Used by batches and commands, which the host never runs at the same time.
    std::map<BAS::String, std::uint64_t> countsM;
};

} // namespace Example
