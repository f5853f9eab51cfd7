// A command made ready for its object: what its values ask the host to do is seen to, and the
// object gets the rest.
//
// A value "@PATH" has the host collect the report that the object writes, and "@-" has it go to the
// sender; "@@..." is the text that begins with the second "@". Any other value is the object's own
// business, but may not name what would keep it waiting. In a command that has a room for its
// reports, every value is collected, whether it asks for that or not: an object that opened a path
// by itself could be led elsewhere.
#pragma once

#include "commands/CollectedReport.h"
#include "commands/Command.h"
#include "commands/NamedFiles.h"

#include <memory>
#include <stdexcept>
#include <vector>

namespace host {

// A command that can't be handed to its object.
class CommandRefused : public std::runtime_error {
public:
    CommandRefused(std::string const& reason, NamedFile file)
        : std::runtime_error(reason), fileM(std::move(file)) {}
    // The one that stands in the way.
    NamedFile const& file() const noexcept { return fileM; }
    // A file that the host was to collect is known not to be whole.
    void setCollected(bool isCollected) noexcept {
        fileM.completeness = isCollected ? Completeness::cut : Completeness::unknown;
    }

private:
    NamedFile fileM;
};

class PreparedCommand {
public:
    // Makes what is needed to collect reports. The command must outlive the object. Throws
    // CommandRefused.
    explicit PreparedCommand(Command const& command);

    // What the object gets.
    BAS::RegistryEntry const& update() const noexcept { return updateM; }
    std::vector<PlainValue> const& plainValues() const noexcept { return plainM; }

    // Once the object has returned: waits until the reports are at their places. With an objection,
    // such as that the object threw, none gets there.
    std::vector<NamedFile> finish(std::string const& objection);

    // Leaves no temporary file when the process ends in the middle. Any thread.
    void removeTraces() noexcept;

private:
    enum class Wish { forSender, file, unknown }; // unknown: the value may be no path at all

    struct Collected {
        std::string key;
        std::filesystem::path place;
        bool looksLikePath; // the value has a '/'
        Wish wish;
        std::unique_ptr<CollectedReport> report;
    };

    std::string prepare(std::string const& key, std::string const& value);
    std::string pathForSender(std::string const& key) const;
    std::string collect(std::string const& key, std::string const& path, Wish wish);
    std::string checkedPlain(std::string const& key, std::string const& text);

    Command const& commandM;
    BAS::RegistryEntry updateM;
    std::vector<PlainValue> plainM;
    std::vector<Collected> collectedM;
};

} // namespace host
