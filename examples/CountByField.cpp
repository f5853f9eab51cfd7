#include "CountByField.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegistryEntry.h"
#include "EDR/Container.h"
#include "EDR/Factory.h"

#include <fstream>
#include <memory>

namespace Example {

// A plug-in whose start fails stays invalid: the host reports its status and doesn't use it.
CountByField::CountByField(BAS::String const& name) : FunctionPlugIn(name, "1") {
    bool const isValid = isUsable() && readRegistry() && setEDRContainerIndices();
    std::lock_guard const guard(isValidLockerCM);
    isValidM = isValid;
}

bool CountByField::readRegistry() {
    auto const* const own = registry();
    auto const* const field = own == nullptr ? nullptr : own->find("Field");
    if (field == nullptr || field->value().isNull()) {
        setStatus("ERR_REG_ENTRY_NOT_FOUND", BAS::Status::critical, "Field", true);
        return false;
    }
    fieldNameM = field->value();
    return true;
}

// A path is resolved once; reading by the handle is array access.
bool CountByField::setEDRContainerIndices() {
    try {
        fieldM = edrFactoryM->getIndex("FCT_CountByField", fieldNameM, "", "");
        return true;
    } catch (BAS::Status& status) {
        status.setObjectName(name());
        setStatus(status, true);
        writeToPipelineLog(status);
        return false;
    }
}

bool CountByField::processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) {
    for (std::size_t i = 0; i < batch.entries(); ++i) {
        if (batch[i]->recordKind() == EDR::detailRecord) {
            ++countsM[batch[i]->getString(fieldM)];
        }
    }
    return true;
}

bool CountByField::registryUpdate(BAS::RegistryEntry const* update, BAS::ProtectedBool& workDone) {
    bool isHandled = false;
    if (auto const* const report = update->find("Report")) {
        isHandled = writeReport(report->value());
    }
    if (update->find("Clear") != nullptr) {
        countsM.clear();
        isHandled = true;
    }
    if (isHandled) {
        workDone.set(true);
    }
    return isHandled;
}

bool CountByField::writeReport(BAS::String const& file) {
    std::ofstream out(file.str());
    for (auto const& [value, count] : countsM) {
        out << value.str() << ' ' << count << '\n';
    }
    out.close();
    if (!out) {
        setStatus("ERR_REG_UPDATE_FAILED", BAS::Status::error, file, true);
    }
    return static_cast<bool>(out);
}

} // namespace Example

// The host calls it with the plug-in's registered name, and owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
FCT_CountByFieldModuleStart(BAS::String const& name) {
    return std::make_unique<Example::CountByField>(name).release();
}
