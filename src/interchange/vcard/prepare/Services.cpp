// The table of messaging services.
#include "interchange/vcard/prepare/Services.h"

#include "interchange/vcard/prepare/Ascii.h"

namespace vcard::prepare {

namespace {

constexpr Service kServices[] = {
    {"aim", "X-AIM", Entries::aims, {}},
    {"gg", {}, Entries::urls, "Gadu-Gadu"},
    {"groupwise", {}, Entries::urls, "GroupWise"},
    // Its addresses are those of XMPP, and its name is worth keeping.
    {"gtalk", "X-JABBER", Entries::jabbers, "Google Talk"},
    {"icq", "X-ICQ", Entries::icqs, {}},
    {"irc", {}, Entries::urls, "IRC"},
    {"jabber", "X-JABBER", Entries::jabbers, {}},
    {"matrix", {}, Entries::urls, "Matrix"},
    {"msn", "X-MSN", Entries::msns, {}},
    {"msnim", "X-MSN", Entries::msns, {}},
    {"qq", {}, Entries::urls, "QQ"},
    {"sip", {}, Entries::urls, "SIP"},
    {"sips", {}, Entries::urls, "SIP"},
    {"skype", {}, Entries::urls, "Skype"},
    {"xmpp", "X-JABBER", Entries::jabbers, {}},
    {"yahoo", "X-YAHOO", Entries::yahoos, {}},
    {"ymsgr", "X-YAHOO", Entries::yahoos, {}},
};

} // namespace

const Service* serviceOf(std::string_view scheme)
{
    for (const auto& service : kServices)
        if (equalInAnyCase(service.scheme, scheme))
            return &service;
    return nullptr;
}

std::string_view schemeOf(std::string_view value)
{
    const auto scheme = value.substr(0, value.find(':'));
    if (scheme.size() == value.size() || scheme.empty() || upper(scheme.front()) < 'A'
        || upper(scheme.front()) > 'Z')
        return {};
    for (const char c : scheme)
        if (c == '_' || (!isNameCharacter(c) && c != '+' && c != '.'))
            return {};
    return scheme;
}

} // namespace vcard::prepare
