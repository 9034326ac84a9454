// How a program hears that the roster changed, by itself and by others, and on which thread.
#pragma once

#include "api/ZRHandles.h"
#include "core/ZRMainQueue.h"

// Callbacks come on the main queue, one at a time; core/ZRMainQueue.h says how a program with a loop of its
// own serves it.

#ifdef __cplusplus
extern "C" {
#endif

/// Somebody who is told. It is no handle of the kind above: it is not counted.
typedef struct ZRObserver ZRObserver;

/// Told of one notice.
///
/// \param name kZRDatabaseChangedNotification: a save of this process;
/// kZRDatabaseChangedExternallyNotification:
///   one of another, whose changes are read when this is called; or another of core/ZRVocabulary.h.
/// \param object the roster that it is about, or NULL; borrowed.
/// \param userInfo details, or NULL; borrowed. Of a change: arrays of unique ids under kZRInsertedRecords,
///   kZRUpdatedRecords and kZRDeletedRecords. A list that is not there is empty; with none of the three,
///   anything may have changed.
/// \param refcon what ZRObserverCreate was given.
typedef void (*ZRNoticeCallback)(const char* name, ZRTypeRef object, ZRDictionaryRef userInfo, void* refcon);

/// Has `callback` called for each notice called `name` about `object`; NULL is any name, any object. The
/// callback may call every function, end observers, its own too, and must not wait for the main queue. NULL
/// on failure.
///
/// Notices come after the fact: a record may have changed again meanwhile. They concern rosters that were
/// opened, so open one; a program that was stopped hears of the saves it missed as one notice.
ZR_EXPORT ZRObserver* ZRObserverCreate(
    const char* name, ZRTypeRef object, ZRNoticeCallback callback, void* refcon);
/// Ends it: once this has returned its callback does not begin any more. One that is under way on another
/// thread is waited for, so do not hold a lock that it takes. NULL is allowed.
ZR_EXPORT void ZRObserverDestroy(ZRObserver* observer);

#ifdef __cplusplus
}
#endif
