// The texts of all messages of the plug-ins, the data modules and the host. In a text, %1 to %9
// stand for the status's arguments.
#pragma once

#include "BAS/Status.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

namespace host {

struct CatalogueMessage {
    std::string_view name;
    std::string_view text;
};

inline constexpr auto messageCatalogue = std::to_array<CatalogueMessage>({
    // Framework, plug-ins and data modules.
    {"ERR_REG_SUBTREE_NOT_FOUND", "The registry has no subtree '%1'."},
    {"ERR_REG_ENTRY_NOT_FOUND", "The mandatory registry key '%1' is missing%2."},
    {"ERR_PLUGIN_TYPE_INVALID",
     "The module '%1'%2 doesn't exist in the data pool or is of another kind than the registry key "
     "requires. AccountDataModule expects a DAT_Account, BalanceDataModule a DAT_Balance, "
     "DiscountDataModule a DAT_Discount, RateplanDataModule a DAT_Rateplan, PriceDataModule a "
     "DAT_Price, and Database a DBC_Database."},
    {"ERR_DATA_PLUGIN_NOT_FOUND",
     "There is no data module '%1'%2: expected a name below DataPool in the registry."},
    {"ERR_REG_UPDATE_FAILED", "The registry update of '%1' failed."},
    {"ERR_REG_VALUE_INVALID", "The registry value '%1' is invalid: %2"},
    {"ERR_INIT_EDR_ITERATOR", "No iterator can be made for the EDR block '%1'."},
    {"ERR_DATABASE", "Database error: %1"},
    {"ERR_EMPTY_SERVICE_FIELD_MAP",
     "The service field map can't be used: %1. KWL_PIPELINE must have a row with the pipeline's "
     "name, KWL_ALIAS_MAP rows with the EDRC_DESC of that row and a customer's REFERENCE, and "
     "KWL_EDRC_FIELD a row with the FIELD_ID of each."},
    {"ERR_EDR_FIELD_NOT_FOUND",
     "The EDR description has no field '%1' (alias '%2', needed by %3 %4)%5."},
    {"ERR_EDR_BLOCK_NOT_FOUND",
     "The EDR description has no block '%1' (alias '%2', needed by %3 %4)%5."},
    {"ERR_PIPELINE_NOT_FOUND", "'%1' doesn't belong to a pipeline."},
    {"ERR_ROW_REJECTED", "The row %2 of table %1 is rejected: %3"},
    {"MSG_DATA_LOADED", "Loaded %1 rows, rejected %2, from '%3' in %4 s: %5; reading began at %6."},
    // Reload.
    {"ERR_DATA_NOT_READ", "The data can't be read: %1"},
    {"ERR_DATA_TABLE_EMPTY",
     "Nothing is reloaded because these tables have no usable row any more: %1; Reload=force "
     "reloads them anyway."},
    {"ERR_RELOAD_GIVEN_UP", "The reload is abandoned because the host stops."},
    {"ERR_RELOAD_STUCK",
     "A reload was still reading %1 s after the signal; the host ends in its middle."},
    {"MSG_POOL_RELOADED", "Reloaded together. %1"},
    {"ERR_POOL_NOT_RELOADED", "Nothing is reloaded because of '%1': %2"},
    // Start.
    {"ERR_CONFIGURATION", "%1:%2:%3: %4"},
    {"ERR_FILE_NOT_READABLE", "'%1' can't be read: %2"},
    {"ERR_FILE_NOT_WRITABLE", "'%1' can't be written: %2"},
    {"ERR_LIBRARY_NOT_FOUND", "The library of the module '%1' wasn't found%3. Tried: %2"},
    {"ERR_LIBRARY_NOT_LOADED", "The library '%1' can't be loaded: %2"},
    {"ERR_MODULE_ENTRY_NOT_FOUND", "The library '%1' has no entry '%2'%3."},
    {"ERR_MODULE_ENTRY_FAILED", "The entry '%2' of the library '%1' failed: %3"},
    {"ERR_DIRECTORY_NOT_USABLE", "The directory '%1' can't be used: %2"},
    {"ERR_DIRECTORY_NOT_PRIVATE",
     "The directory '%1' can't be used for commands: it must belong to the user of the host, which "
     "is %4 here, or to root, and neither group nor others may write in it; it belongs to user %2 "
     "and has the mode %3."},
    {"ERR_GROUP_NOT_USABLE", "The group '%1' can't be used for commands: %2."},
    {"ERR_DIRECTORY_NOT_FOR_GROUP",
     "The directory '%1' can't be used for commands of the group '%2': it must belong to the user "
     "of "
     "the host, which is %3 here, and to that group, with the mode %4; it belongs to user %5 and "
     "group '%6' and has the mode %7."},
    {"ERR_DIRECTORY_IN_USE", "The directory '%1' is in use by another host or pipeline."},
    {"ERR_NO_COMMAND_DIRECTORY",
     "The registry '%1' has no command directory: expected 'Commands: {Directory: ...}'."},
    {"ERR_NO_STATUS_FILE",
     "The registry '%1' names no place for the status: expected 'Commands: {Directory: ...}' or "
     "'Status: {File: ...}'."},
    {"ERR_STATUS_FILE_IN_USE", "The status file '%1' is that of another host that runs."},
    {"ERR_NO_HOST", "No host runs that shows its status in '%1'."},
    {"ERR_SYSTEM", "%1 failed: %2"},
    {"ERR_PROGRAM_FAILED", "The program failed: %1"},
    {"ERR_MODULE_KIND_WRONG", "The module '%1' is of the wrong kind: expected %2, got %3."},
    {"ERR_MODULE_NOT_USABLE", "The module '%1' isn't usable: %2"},
    {"MSG_MODULE_LEFT_OUT", "The module '%1' isn't loaded: it refers to '%2', which isn't usable."},
    {"ERR_LIFE_CYCLE", "The operation '%1' failed: %2"},
    {"ERR_REG_KEY_UNREAD", "The module started without reading the registry key '%1'%2."},
    {"MSG_STARTED", "Started; data modules: %1, pipelines: %2."},
    // Run.
    {"MSG_INPUT_STARTED", "Reading '%1'."},
    {"MSG_INPUT_RESUMED", "Resuming '%1' after byte %2."},
    {"MSG_INPUT_DONE", "'%1' is done and kept as '%2'."},
    {"ERR_INPUT_CHANGED", "'%1' isn't the interrupted file any more; it is read from its start."},
    {"ERR_INPUT_REPLACED",
     "Another file took the place of '%1' while it was read; what was read of it is processed, and "
     "the other file is read by itself."},
    {"ERR_INPUT_VANISHED", "'%1' vanished while it was read; what was read of it is processed."},
    {"ERR_FILE_NOT_MOVED", "'%1' can't be moved to '%2': %3"},
    {"MSG_STOPPING", "Stopping on a signal: the batches in progress are finished."},
    {"ERR_EDR_REJECTED", "%1:%2: %3; the line is kept in '%4'."},
    {"ERR_EDR_FIELD_UNKNOWN", "%1:%2: the EDR description has no field '%3'%4; it is ignored."},
    {"ERR_EDR_FIELDS_UNKNOWN",
     "%1:%2: %3 unknown fields were reported; further ones are ignored silently."},
    // Streams.
    {"ERR_NO_STREAM", "The registry '%1' has no pipeline '%2' that reads a stream."},
    {"ERR_STREAM_FAILED", "The stream '%1': %2 failed: %3"},
    {"ERR_STREAM_AWAITED", "The stream '%1' is waited for: %2"},
    {"ERR_STREAM_ANEW",
     "The stream '%1' isn't the one any more in which the pipeline came to its place: it was made "
     "anew. To begin at its start, remove its places and start the host again."},
    {"ERR_STREAM_MESSAGES_MISSING",
     "%1: %2 messages before sequence %3 are gone and weren't processed."},
    {"ERR_STREAM_MESSAGES_LOST",
     "%1: the servers lost the messages %2 to %3, which they had acknowledged and which were "
     "processed. Reading goes on at sequence %2; what is published there again is processed "
     "again."},
    {"MSG_SOURCE_CONTINUED", "'%1' has changed since lines of it were published as '%2', but not "
                             "in those lines: it goes on after them."},
    {"MSG_SOURCE_ANEW",
     "'%1' has other lines than those that were published last as '%2': it counts as another file, "
     "and is published from its first line on."},
    {"MSG_SOURCE_PASSED", "'%1' counts as published in %3 of %4 partitions, because lines of '%2', "
                          "which comes after it, are the last ones there."},
    {"MSG_STREAM_STARTED", "Reading '%1' from sequence %2 on, after %3 lines of it."},
    {"MSG_PARTITION_TAKEN", "This host owns the partition '%1' now."},
    {"MSG_PARTITION_AWAITED", "The partition '%1' is waited for: '%2' owns it."},
    {"ERR_PARTITION_LOST",
     "Partitions of '%1' may belong to another host now; the batch at hand isn't processed, and "
     "the reading begins again."},
    {"MSG_STREAM_COMMANDS", "Commands to all hosts of the stream '%1' are taken."},
    {"MSG_STREAM_COMMAND_TAKEN",
     "Took a command to all hosts of '%1'; its sender calls itself '%2'."},
    {"MSG_STREAM_COMMAND_PASSED",
     "A command to all hosts of '%1' isn't for this host: it owns no partition."},
    {"ERR_STREAM_COMMAND_LATE",
     "A command to all hosts of '%1' isn't carried out: its sender waits no longer."},
    {"ERR_STREAM_COMMAND_IGNORED", "A command to all hosts of '%1' is ignored: %2."},
    {"ERR_STREAM_ANSWER_NOT_TAKEN",
     "The answer to a command to all hosts of '%1' wasn't taken as a whole: %2."},
    {"ERR_BATCH_FAILED", "The plug-in threw while it processed a batch: %1"},
    {"ERR_PIPELINE_FAILED", "The pipeline stopped: %1"},
    {"ERR_BATCH_STUCK",
     "The plug-in has had a batch for %1 seconds, longer than the %2 of Watchdog.BatchSeconds; the "
     "host counts as stuck."},
    {"MSG_BATCH_DONE", "The batch in which the host counted as stuck is done."},
    {"MSG_COMMAND_RESULT", "%1"},
    {"ERR_COMMAND_REJECTED", "%1"},
    {"ERR_COMMAND_FILE_NOT_OPENED", "The command '%1' names '%2', which wasn't written: %3"},
    {"ERR_COMMAND_FILE_NOT_WHOLE", "What the command '%1' wrote to '%2' isn't whole: %3"},
    {"MSG_COMMAND_STARTED", "Carrying out '%1'."},
    {"ERR_COMMAND_LONG", "'%1' has been at work for %2 s and goes on."},
    {"ERR_COMMAND_GIVEN_UP",
     "'%1' was still at work %2 s after the signal; the host ends in its middle."},
    {"ERR_COMMAND_MALFORMED", "The command file '%1' is rejected: %2"},
    {"ERR_COMMAND_INTERRUPTED",
     "The host ended while it executed the command file '%1'; its outcome is unknown."},
    {"MSG_COMMAND_TAKEN", "Took the command file '%1' of the user '%2'."},
    {"MSG_RESULTS_REMOVED",
     "Removed %1 results and reports that nobody had fetched for %2 days from '%3'."},
    {"ERR_COMMANDS_STOPPED", "No more commands are taken from '%1': %2"},
    {"MSG_PIPELINE_SUMMARY",
     "EDRs read: %1, details: %2, rejected: %3, failed inputs: %4, batches: %5, faults: %6, "
     "seconds: %7, commands: %8."},
});

namespace detail {

constexpr bool isCatalogued(std::string_view name) {
    return std::any_of(messageCatalogue.begin(), messageCatalogue.end(),
                       [&](auto const& message) { return message.name == name; });
}

constexpr bool hasDoubleName() {
    for (auto one = messageCatalogue.begin(); one != messageCatalogue.end(); ++one) {
        for (auto other = messageCatalogue.begin(); other != one; ++other) {
            if (one->name == other->name) {
                return true;
            }
        }
    }
    return false;
}
static_assert(!hasDoubleName(), "a message name stands twice in the catalogue");

} // namespace detail

// The name of a message that is in the catalogue; any other doesn't compile.
class MessageName {
public:
    consteval MessageName(char const* name) : nameM(name) {
        if (!detail::isCatalogued(name)) {
            throw "this message isn't in the catalogue";
        }
    }
    char const* text() const noexcept { return nameM; }

private:
    char const* nameM;
};

// A status of the host. The object is a registered name, or empty.
BAS::Status makeStatus(BAS::Status::Severity severity, BAS::String const& object, MessageName name,
                       std::initializer_list<std::string> arguments);

// The status's text with its arguments. Arguments that the text doesn't use are appended; for a
// message that isn't in the catalogue, the text is its name.
std::string messageText(BAS::Status const& status);

// Name and text, for use in another message.
std::string statusText(BAS::Status const& status);

} // namespace host
