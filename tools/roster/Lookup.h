// Which record a word on the command line means.
#pragma once

#include "Command.h"

class ZRGroup;
class ZRPerson;

/// The one card that `text` means: its id, the start of its id, or text found in one card only. Anything else
/// raises a Failure that names the candidates.
platform::Ref<ZRRecord> recordNamed(ZRRoster& roster, const std::string& text);
/// The same, of a person.
platform::Ref<ZRPerson> personNamed(ZRRoster& roster, const std::string& text);
/// The one person that has that id, an id that begins so (8 characters at least), or just that name, in any
/// case and with any accents: for what cannot be taken back. Anything else raises a Failure that names the
/// candidates.
platform::Ref<ZRPerson> personCalled(ZRRoster& roster, const std::string& text);
/// Several of them, each once, however often it is named; all may be changed here.
std::vector<platform::Ref<ZRPerson>> peopleCalled(ZRRoster& roster, const std::vector<std::string>& texts);
/// Raises a Failure for a card that its source alone may change.
void requireWritable(ZRPerson& person);

enum class GroupKind { any, ordinary, smart };

/// The one group that `text` means: its id, the start of its id, or its name in any case and with any
/// accents; a name as it is written goes before others. Anything else raises a Failure.
platform::Ref<ZRGroup> groupNamed(ZRRoster& roster, const std::string& text, GroupKind kind = GroupKind::any);
/// The same; absent when there is no such group.
platform::Ref<ZRGroup> groupIfNamed(
    ZRRoster& roster, const std::string& text, GroupKind kind = GroupKind::any);
/// Groups of a kind in the order of their names, ordinary ones before smart ones.
std::vector<platform::Ref<ZRGroup>> groupsByName(ZRRoster& roster, GroupKind kind);

/// The words with blanks between them.
std::string joined(const std::vector<std::string>& words);
