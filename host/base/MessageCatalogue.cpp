#include "base/MessageCatalogue.h"

namespace host {

namespace {

std::string_view catalogueText(BAS::Status const& status) {
    auto const found =
        std::find_if(messageCatalogue.begin(), messageCatalogue.end(), [&](auto const& message) {
            return message.name == status.messageName().view();
        });
    return found == messageCatalogue.end() ? status.messageName().view() : found->text;
}

} // namespace

BAS::Status makeStatus(BAS::Status::Severity severity, BAS::String const& object, MessageName name,
                       std::initializer_list<std::string> arguments) {
    BAS::Status status;
    status.set(object, name.text(), severity, BAS::NULL_STRING);
    status.arguments().clear();
    for (auto const& argument : arguments) {
        status.arguments().append(argument);
    }
    return status;
}

std::string messageText(BAS::Status const& status) {
    auto const& arguments = status.arguments();
    auto const text = catalogueText(status);
    std::string rendered;
    std::size_t argumentsShown = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isPlace =
            text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9';
        if (!isPlace) {
            rendered += text[i];
            continue;
        }
        ++i;
        auto const number = static_cast<std::size_t>(text[i] - '0');
        argumentsShown = std::max(argumentsShown, number);
        if (number <= arguments.entries()) {
            rendered += arguments[number - 1].view();
        }
    }
    for (auto i = argumentsShown; i < arguments.entries(); ++i) {
        rendered += " '" + arguments[i].str() + "'";
    }
    return rendered;
}

std::string statusText(BAS::Status const& status) {
    return status.messageName().isNull() ? "no status was set"
                                         : status.messageName().str() + ": " + messageText(status);
}

} // namespace host
