#include "program/Walk.h"

#include "text/Hash.h"
#include "text/Output.h"

#include <cstdio>

namespace reader {

void warn(std::string const& file, LineNumber line, std::string const& text) {
    fmt::print(stderr, "datadump: {}:{}: {}\n", printable(file), line, printable(text));
}

void Walk::forEach(Visitor const& visit, Notices notices) {
    for (std::size_t i = 0; i < filesM.size(); ++i) {
        InputFile file(filesM[i], pathsM[i]);
        EventReader events(file, [&](LineNumber line, std::string const& text) {
            if (notices == Notices::printed) {
                warn(filesM[i], line, text);
            }
        });
        EventText event;
        while (events.next(event)) {
            visit(event, i);
        }
    }
}

void KeyRegister::add(std::string_view customer, std::string_view service, EventText const& event,
                      std::size_t file, std::vector<std::string> const& files) {
    auto const key = hashOf(service, hashOf(customer, static_cast<std::uint64_t>(event.kind)));
    auto const [place, isNew] = placesM.try_emplace(key, Place{file, event.line});
    if (!isNew && place->second.file != file) {
        warn(files[file], event.line,
             fmt::format("the key {} {} is also in {}:{}", customer, service,
                         files[place->second.file], place->second.line));
    }
}

} // namespace reader
