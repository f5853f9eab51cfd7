#include "EDR/Container.h"
#include "EDR/Description.h"
#include "FuzzInput.h"
#include "base/EscapedText.h"
#include "registry/EdrDescriptionFile.h"

namespace {

std::string quotedName(BAS::String const& path) {
    return host::quotedText(path.view().substr(path.view().rfind('.') + 1));
}

std::string yamlOf(EDR::Description const& description, std::uint32_t number) {
    static constexpr char const* types[] = {"text", "long", "datetime"};
    auto const& kind = description.blockKinds()[number];
    std::string text = "{";
    for (auto const& field : kind.fields) {
        text += "? " + quotedName(field.path) + " : " + types[static_cast<int>(field.type)] + ", ";
    }
    for (auto const child : kind.children) {
        text += "? " + quotedName(description.blockKinds()[child].path) + " : " +
                yamlOf(description, child) + ", ";
    }
    return text + "}";
}

void checkSame(EDR::Description const& one, EDR::Description const& other) {
    fuzz::promise(one.blockKinds().size() == other.blockKinds().size(), "the same blocks");
    for (std::size_t i = 0; i < one.blockKinds().size(); ++i) {
        auto const& kind = one.blockKinds()[i];
        auto const& same = other.blockKinds()[i];
        fuzz::promise(kind.path == same.path && kind.lineage == same.lineage &&
                          kind.fields.size() == same.fields.size(),
                      "the same block");
        for (std::size_t field = 0; field < kind.fields.size(); ++field) {
            fuzz::promise(kind.fields[field].path == same.fields[field].path &&
                              kind.fields[field].type == same.fields[field].type,
                          "the same field");
        }
    }
}

// Every field of an EDR with one block of each kind can be found, written and read.
void checkUse(EDR::Description const& description) {
    EDR::Container container(description);
    for (std::uint32_t number = 0; number < description.blockKinds().size(); ++number) {
        auto const& kind = description.blockKinds()[number];
        auto const block = description.findBlock(kind.path);
        fuzz::promise(block == EDR::BlockIndex(number), "a block is found");
        if (block != EDR::Description::root()) {
            container.addBlock(block);
        }
        for (std::uint32_t field = 0; field < kind.fields.size(); ++field) {
            auto const index = description.findField(kind.fields[field].path);
            fuzz::promise(index == EDR::Index(number, field), "a field is found");
            container.setField(index, std::to_string(field));
            fuzz::promise(container.getLong(index) == static_cast<long>(field), "a field is read");
        }
    }
}

} // namespace

// An accepted description can be used, and written so that it is read again as it was.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    EDR::Description description;
    bool const accepted = fuzz::isAccepted(fuzz::textOf(data, size), [&](auto const& file) {
        description = host::readEdrDescription(file);
    });
    if (accepted) {
        checkUse(description);
        fuzz::MemoryFile const again("DETAIL: " +
                                     yamlOf(description, EDR::Description::root().blockKind()));
        checkSame(description, host::readEdrDescription(again.path()));
    }
    return 0;
}
