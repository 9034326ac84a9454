// Who takes a mail message away: the step out of this library into the user's mail program.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Error.h"

#include <memory>
#include <string>
#include <vector>

/// The arguments of the handler "sendemail" of the script "MailNotification".
struct MailMessage {
    /// The identifier of the user's program for mail; empty when none is chosen.
    std::string application;
    /// The file to enclose. It goes when the handler has returned.
    std::string file;
    std::vector<std::string> addresses;
    std::string subject;
    std::string message;
};

/// Sends messages by the user's mail program. The library has no such program itself: a host that wants mail
/// sent installs a carrier.
///
/// Ownership: an installed one is shared.
/// Threads:   called on a thread of the library's own, without locks; it may take its time.
/// Errors:    a message that was not taken is answered with the reason.
class ZR_EXPORT MailCarrier {
public:
    virtual ~MailCarrier() = default;
    virtual platform::Result<void> sendemail(const MailMessage& message) = 0;

    /// The one in use: unless another was installed, one that logs what it would send and keeps nothing.
    static std::shared_ptr<MailCarrier> shared();
    /// Replaces it and answers the former; null brings the logging one back.
    static std::shared_ptr<MailCarrier> install(std::shared_ptr<MailCarrier> carrier);
};
