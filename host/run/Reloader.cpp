#include "run/Reloader.h"

#include "DAT/LoadSession.h"
#include "base/Failures.h"

#include <malloc.h>

#include <algorithm>

namespace host {

namespace {

// The tables that have become empty, with the number of rows that they had.
std::string emptiedTables(DAT::LoadReport const& before, DAT::LoadReport const& after) {
    std::string text;
    for (auto const& table : after.tables) {
        auto const old = std::find_if(before.tables.begin(), before.tables.end(),
                                      [&](auto const& each) { return each.name == table.name; });
        if (table.rows == 0 && old != before.tables.end() && old->rows > 0) {
            text += (text.empty() ? "" : ", ") + table.name.str() + " (had " +
                    std::to_string(old->rows) + ")";
        }
    }
    return text;
}

BAS::Status givenUp(BAS::String const& object) {
    return makeStatus(BAS::Status::error, object, "ERR_RELOAD_GIVEN_UP", {});
}

void requireNoStop(ReloadableModule const& module, std::stop_token const& stop) {
    if (stop.stop_requested()) {
        throw givenUp(module.name);
    }
}

// Throws a BAS::Status when the data can't be read or used.
std::unique_ptr<DAT::NewData> readModule(ReloadableModule const& module, DAT::LoadSession& session,
                                         bool isForced) {
    auto data = module.module->readNewData(session);
    auto const emptied = emptiedTables(module.module->loadReport(), data->report());
    if (!isForced && !emptied.empty()) {
        throw makeStatus(BAS::Status::error, module.name, "ERR_DATA_TABLE_EMPTY", {emptied});
    }
    return data;
}

} // namespace

void Reloader::begin(Reload reload) {
    unfinishedM.push_back(std::make_shared<Reload>(std::move(reload)));
    {
        std::lock_guard const guard(lockM);
        waitingReloadsM.push_back(unfinishedM.back());
        isReaderAtWorkM = true;
    }
    changedM.notify_all();
    if (!readerM.joinable()) {
        readerM = std::jthread([this](std::stop_token const& stop) { readAll(stop); });
    }
}

void Reloader::handBack() {
    readBellM.take();
    std::deque<std::shared_ptr<Reload>> read;
    {
        std::lock_guard const guard(lockM);
        read.swap(readReloadsM);
    }
    for (auto const& reload : read) {
        unfinishedM.pop_front();
        reload->done(*reload);
    }
}

bool Reloader::stop(std::chrono::seconds timeout) {
    if (readerM.joinable()) {
        readerM.request_stop();
        {
            std::unique_lock guard(lockM);
            if (!changedM.wait_for(guard, timeout, [&] { return !isReaderAtWorkM; })) {
                return false;
            }
        }
        readerM.join();
    }
    handBack();
    return true;
}

// The reader may still have the reload in hand, and be in the middle of its data: another one
// takes its place.
void Reloader::giveUp() {
    while (!unfinishedM.empty()) { // done may begin the next one
        auto const& reload = *unfinishedM.front();
        Reload given;
        given.object = reload.object;
        given.modules = reload.modules;
        given.done = reload.done;
        given.failure = givenUp(reload.object);
        unfinishedM.pop_front();
        given.done(given);
    }
}

void Reloader::readAll(std::stop_token const& stop) {
    while (readNext(stop)) {
    }
    {
        std::lock_guard const guard(lockM);
        isReaderAtWorkM = false;
    }
    changedM.notify_all();
}

// False when nothing waits after a stop request; reloads that wait then are passed on without being
// read.
bool Reloader::readNext(std::stop_token const& stop) {
    std::shared_ptr<Reload> reload;
    {
        std::unique_lock guard(lockM);
        changedM.wait(guard, stop, [&] { return !waitingReloadsM.empty(); });
        if (waitingReloadsM.empty()) {
            return false;
        }
        reload = std::move(waitingReloadsM.front());
        waitingReloadsM.pop_front();
    }
    read(*reload, stop);
    {
        std::lock_guard const guard(lockM);
        readReloadsM.push_back(std::move(reload));
    }
    readBellM.ring();
    return true;
}

void Reloader::read(Reload& reload, std::stop_token const& stop) {
    DAT::LoadSession session(stop);
    for (auto const& module : reload.modules) {
        if (reload.failure) {
            break;
        }
        try {
            requireNoStop(module, stop);
            reload.newData.push_back(readModule(module, session, reload.isForced));
            requireNoStop(module, stop); // what a module returns then may be a part
            ::malloc_trim(0); // what reading took besides, which the next module may not fit into
        } catch (BAS::Status const& status) {
            reload.failure = status;
            reload.failure->setObjectName(module.name);
        } catch (...) {
            reload.failure = makeStatus(BAS::Status::error, module.name, "ERR_DATA_NOT_READ",
                                        {currentExceptionText()});
        }
    }
    if (reload.failure) {
        reload.newData.clear();
        // Whatever a module that was interrupted took for the reason.
        if (stop.stop_requested()) {
            reload.failure = givenUp(reload.failure->objectName());
        }
    }
}

} // namespace host
