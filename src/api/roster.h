// The contacts of the user, for programs in C and for those that want one plain header.
#ifndef ZR_ROSTER_H
#define ZR_ROSTER_H

/// \file
/// The plain functions of the roster: one header, for C11 and for C++.
///
/// **Handles.** Everything is a ZRTypeRef: a counted reference to a text, a number, a record, a roster. The
/// other handle types are names for it, so nothing has to be cast; a function that is given a handle of the
/// wrong kind, or NULL, answers its failure value and does nothing.
///
/// **Ownership.** What a function with `Create` or `Copy` in its name answers is the caller's, who ends it
/// with ZRRelease. What one with `Get` answers is borrowed: it lives as long as what it was asked of, and who
/// wants it longer takes a ZRRetain. Arguments are never taken over: a function that keeps one takes a
/// reference of its own.
///
/// **Texts** are UTF-8 and end with a zero. They go in as `const char *` (NULL is "none") and come out as
/// ZRStringRef, read with ZRStringGetUTF8. What is no UTF-8 is refused like a wrong handle.
///
/// **Failures.** A function that cannot do its work answers NULL, false or 0, as its text says, and nothing
/// has changed then. None ends the program, prints, or throws through C; what no caller could expect (a file
/// that cannot be written) is told to the log.
///
/// **Threads.** Any thread may call any function with any handle, and release on another thread than it
/// created on; only one multi-value, while it is edited, belongs to one thread. What happens in the roster is
/// one after the other: each call holds the roster's lock while it works. Callbacks come on the main queue
/// only (ZRNoticeFunctions.h).
///
/// **Processes.** Several programs share one roster; what one saves the others see. In a child that was
/// forked from a program which had used the roster, every function answers its failure value until the child
/// executes a program of its own.

#include "api/ZRHandles.h"
#include "api/ZRMultiValueFunctions.h"
#include "api/ZRNoticeFunctions.h"
#include "api/ZRPeopleFunctions.h"
#include "api/ZRRosterFunctions.h"
#include "api/ZRSearchFunctions.h"
#include "api/ZRValueFunctions.h"
#include "core/ZRTypes.h"
#include "core/ZRVocabulary.h"

#endif
