// A log that keeps what is written to it, one text an entry: "message(severity) arguments @object".
#pragma once

#include "BAS/LogSink.h"
#include "BAS/Status.h"

#include <mutex>
#include <string>
#include <vector>

namespace support {

class LogRecorder : public BAS::LogSink {
public:
    void write(BAS::Status const& status) override {
        std::string text =
            status.messageName().str() + "(" + std::to_string(status.severity()) + ")";
        for (auto const& argument : status.arguments()) {
            text += " [" + argument.str() + "]";
        }
        text += " @" + status.objectName().str();
        std::lock_guard const guard(lockM);
        entriesM.push_back(std::move(text));
    }

    std::vector<std::string> entries() const {
        std::lock_guard const guard(lockM);
        return entriesM;
    }

private:
    mutable std::mutex lockM;
    std::vector<std::string> entriesM;
};

} // namespace support
