#include "base/Failures.h"

#include <exception>
#include <system_error>

namespace host {

BAS::Status fileStatus(MessageName name, std::filesystem::path const& file, int error) {
    return makeStatus(BAS::Status::critical, {}, name,
                      {file.string(), std::generic_category().message(error)});
}

BAS::Status systemStatus(char const* operation, int error) {
    return makeStatus(BAS::Status::critical, {}, "ERR_SYSTEM",
                      {operation, std::generic_category().message(error)});
}

std::string currentExceptionText() {
    try {
        throw;
    } catch (BAS::Status const& status) {
        return statusText(status);
    } catch (std::exception const& error) {
        return error.what();
    } catch (...) {
        return "an exception of an unknown type";
    }
}

} // namespace host
