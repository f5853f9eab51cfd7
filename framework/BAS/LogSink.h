// Where statuses are written: the process log, or the log of one pipeline. Implemented by the host;
// write may be called from any thread.
#pragma once

namespace BAS {

class Status;

class LogSink {
public:
    virtual ~LogSink() = default;
    virtual void write(Status const& status) = 0;

protected:
    LogSink() = default;
    LogSink(LogSink const&) = default;
    LogSink& operator=(LogSink const&) = default;
};

} // namespace BAS
