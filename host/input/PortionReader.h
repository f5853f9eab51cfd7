// Reads an input and parses it into portions. A portion ends before the reader would have to wait
// for more bytes, after a rejected line or one with unknown fields, and with the input: so the
// pipeline gets everything at once. Used by one thread at a time.
#pragma once

#include "base/Notification.h"
#include "input/EdrSource.h"
#include "input/InputFile.h"
#include "input/LineReader.h"
#include "input/PortionFiller.h"
#include "registry/Registry.h"

#include <cstdint>

namespace host {

class PortionReader : public EdrSource {
public:
    // Opens the input and goes on after so many bytes of it. The pipeline, its parser and stop,
    // which may be null, must outlive the reader; stop ends the waiting when there are no bytes.
    // Throws a BAS::Status when the file fails.
    PortionReader(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                  EdrLineParser& parser, Notification const* stop, std::uint64_t start);

    void read(InputPortion& portion) noexcept override;
    void abandon() noexcept override { abandonedM.set(); }

private:
    bool isComplete(InputPortion const& portion) const;
    void readOn(InputPortion& portion);
    void takeLine(InputPortion& portion);
    void rejectLongLine(InputPortion& portion);
    LineOrigin origin() const;

    InputConfiguration inputM;
    std::size_t maxLineLengthM;
    Notification abandonedM;
    InputFile fileM;
    LineReader linesM;
    PortionFiller fillerM;
};

} // namespace host
