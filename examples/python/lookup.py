#!/usr/bin/env python3
"""Address lookup from Python, over ctypes and the plain functions: the mail addresses of everybody who has the text in
the last name, a line each, as a message is addressed.

    python3 lookup.py lima
"""
import ctypes
import sys

roster = ctypes.CDLL("libroster.so.1")
Handle, Text, Index = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int64
CONTAINS_IGNORING_CASE = 8  # kZRContainsSubStringCaseInsensitive


def function(name, answer, *arguments):
    found = getattr(roster, name)
    found.restype, found.argtypes = answer, arguments
    return found


shared_roster = function("ZRGetSharedRoster", Handle)
release = function("ZRRelease", None, Handle)
text_create = function("ZRStringCreateWithUTF8", Handle, Text)
text_utf8 = function("ZRStringGetUTF8", Text, Handle)
search_create = function("ZRPersonCreateSearchElement", Handle, Text, Text, Text, Handle, ctypes.c_int32)
matching = function("ZRCopyArrayOfMatchingRecords", Handle, Handle, Handle)
array_count = function("ZRArrayGetCount", Index, Handle)
array_value = function("ZRArrayGetValueAtIndex", Handle, Handle, Index)
record_value = function("ZRRecordCopyValue", Handle, Handle, Text)
multi_count = function("ZRMultiValueCount", Index, Handle)
multi_value = function("ZRMultiValueCopyValueAtIndex", Handle, Handle, Index)


def word(name):
    """One of the words that the library exports, such as kZREmailProperty."""
    return ctypes.cast(getattr(roster, name), Text).value


def taken(handle):
    """The text of a handle that was copied for us; nothing for NULL."""
    text = text_utf8(handle).decode()
    release(handle)
    return text


def addresses(person):
    emails = record_value(person, word("kZREmailProperty"))
    found = [taken(multi_value(emails, i)) for i in range(multi_count(emails))]
    release(emails)
    return found


def name(person):
    parts = (taken(record_value(person, word(part))) for part in ("kZRFirstNameProperty", "kZRLastNameProperty"))
    return " ".join(part for part in parts if part)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: lookup.py TEXT")
    contacts = shared_roster()
    if not contacts:
        sys.exit("lookup.py: the contacts cannot be opened")
    value = text_create(sys.argv[1].encode())
    search = search_create(word("kZRLastNameProperty"), None, None, value, CONTAINS_IGNORING_CASE)
    people = matching(contacts, search)
    for i in range(array_count(people)):
        person = array_value(people, i)
        for address in addresses(person):
            print(f"{name(person)} <{address}>")
    for handle in (people, search, value):
        release(handle)


if __name__ == "__main__":
    main()
