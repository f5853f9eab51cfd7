// The entry of the library, by which the host finds it.
#include "CommandReceiver.h"
#include "CommandSender.h"
#include "PartitionedInput.h"
#include "Publisher.h"
#include "StreamAdministration.h"

namespace {

class Library : public host::StreamLibrary {
public:
    std::unique_ptr<host::StreamInput> makeInput(host::PipelineConfiguration const& pipeline,
                                                 EDR::Description const& description,
                                                 BAS::LogSink& log) override {
        return std::make_unique<stream::PartitionedInput>(pipeline, description, log);
    }
    std::unique_ptr<host::StreamCommands> takeCommands(host::PipelineConfiguration const& pipeline,
                                                       host::Bell& arrived,
                                                       BAS::LogSink& log) override {
        return std::make_unique<stream::CommandReceiver>(pipeline, arrived, log);
    }
    host::ExitCode create(host::StreamConfiguration const& stream,
                          host::StreamLimits const& limits) override {
        return stream::createStreams(stream, limits);
    }
    host::ExitCode show(host::StreamConfiguration const& stream, host::OutputForm form) override {
        return stream::showStreams(stream, form);
    }
    host::ExitCode publish(host::PipelineConfiguration const& pipeline,
                           host::StreamSource const& source, host::OutputForm form,
                           host::Notification const& stop) override {
        return stream::publishFiles(pipeline, source, form, stop);
    }
    host::ExitCode send(host::StreamConfiguration const& stream, host::StreamSending const& sending,
                        host::Notification const& stop) override {
        return stream::CommandSender(stream, sending).send(stop);
    }
};

} // namespace

extern "C" host::StreamLibrary& pipelineHostStream() {
    static Library library;
    return library;
}
