#include "FuzzInput.h"
#include "facts/FactReader.h"
#include "facts/HeldObjects.h"
#include "findings/Judge.h"

namespace {

void readEvents(std::string const& path, std::string const& text) {
    reader::InputFile file(path);
    reader::EventReader events(file, [](auto, auto const&) {});
    reader::FactReader facts;
    std::vector<reader::Finding> findings;
    std::string joined;
    reader::EventText event;
    while (events.next(event)) {
        joined += event.text.bytes();
        if (event.isOutside) {
            continue;
        }
        reader::judge(facts.read(event), findings);
        reader::HeldObjectWalk().forEach(
            facts.read(event), [](auto const& object) { static_cast<void>(object.hash()); });
        facts.readOverview(event);
    }
    fuzz::promise(joined == text, "the pieces are the file");
}

} // namespace

// Whatever stands in a file is read, judged and given back byte for byte, or there is no event.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(fuzz::textOf(data, size));
    fuzz::MemoryFile const file(text);
    try {
        readEvents(file.path(), text);
    } catch (reader::InputError const&) {
    }
    return 0;
}
