// How a step begins to see saves and pictures, and stops.
#include "history/ZRHistoryStep.h"

#include "history/HistoryRecorder.h"
#include "objectstore/PersistentStore.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRPictureChanges.h"
#include "store/ZRRoster.h"

using platform::Ref;

struct ZRHistoryStep::State {
    Ref<ZRRoster> roster;
    Ref<objectstore::StoreCoordinator> coordinator;
    objectstore::PersistentStore* store = nullptr;
    history::HistoryRecorder recorder;
};

ZRHistoryStep::ZRHistoryStep(ZRRoster& roster, std::string title)
{
    const auto context = roster.managedObjectContext();
    const auto coordinator = context ? context->coordinator() : nullptr;
    auto* const store = coordinator ? coordinator->firstStore() : nullptr;
    if (!store || objectstore::saveObserver(*coordinator, *store))
        return;
    const std::string directory = roster.isMemoryBacked() ? std::string() : roster.databaseDirectory();
    _state.reset(new State{Ref<ZRRoster>(&roster), coordinator, store,
        history::HistoryRecorder(std::move(title), directory, roster.rosterImagesDirectory())});
    objectstore::setSaveObserver(*coordinator, *store, &_state->recorder);
    locked(roster, ZRAccess::read, [this]() ZR_NTS {
        ZRObservePictures([state = _state.get()](ZRRoster& of, const std::string& uniqueId,
                              std::string_view kind, const platform::Value& data) {
            if (of.storeCoordinator() == state->coordinator.get())
                state->recorder.pictureWillChange(uniqueId, kind, data);
        });
    });
}

ZRHistoryStep::~ZRHistoryStep()
{
    if (!_state)
        return;
    locked(*_state->roster, ZRAccess::read, []() ZR_NTS { ZRObservePictures({}); });
    objectstore::setSaveObserver(*_state->coordinator, *_state->store, nullptr);
}
