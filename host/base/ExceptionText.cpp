#include "base/ExceptionText.h"

#include "base/MessageCatalogue.h"

#include <exception>

namespace host {

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
