#include "watch/HostStatus.h"

#include "PLG/FunctionPlugIn.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

double secondsBetween(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double>(end - begin).count();
}

ObjectStatus objectStatus(HostedObject const& hosted) {
    auto const& object = *hosted.object;
    ObjectStatus status{object.name().str(), std::string(hosted.kind), hosted.moduleName,
                        object.isValid(),    object.status(),          std::nullopt};
    if (auto const* const data = dynamic_cast<DAT::Reloadable const*>(&object)) {
        status.load = data->loadReport();
    }
    return status;
}

} // namespace

StatusGatherer::StatusGatherer(Host const& host, CommandJournal const& journal,
                               std::filesystem::path const& registry)
    : hostM(host), journalM(journal), registryM(std::filesystem::absolute(registry)) {
}

HostStatus StatusGatherer::gather() {
    HostStatus status;
    status.version = PIPELINE_HOST_VERSION;
    status.registry = registryM;
    status.since = sinceM;
    status.time = std::chrono::system_clock::now();
    for (auto const& pipeline : hostM.pipelines()) {
        status.pipelines.push_back(pipelineStatus(*pipeline));
    }
    for (auto const& object : hostM.objects()) {
        status.objects.push_back(objectStatus(object));
    }
    status.commandsInProgress = journalM.inProgress();
    status.lastCommands = journalM.answered();
    return status;
}

PipelineStatus StatusGatherer::pipelineStatus(PipelineRunner const& pipeline) {
    auto const& configuration = pipeline.configuration();
    PipelineStatus status{configuration.name, configuration.countBy, pipeline.state(), 0,
                          std::nullopt,       std::nullopt};
    auto const now = Clock::now();
    auto& rate = ratesM[&pipeline];
    rate.add(now, status.state.counters.read);
    status.edrsPerSecond = rate.perSecond();
    if (status.state.lastBatch) {
        status.secondsSinceBatch = secondsBetween(*status.state.lastBatch, now);
    }
    if (auto const batch = pipeline.batchAtHand()) {
        status.plugInAtWork = {batch->function->name().str(), secondsBetween(batch->since, now)};
    }
    return status;
}

} // namespace host
