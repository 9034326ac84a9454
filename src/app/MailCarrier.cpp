// Which carrier is in use, and the one that only says what it would do.
#include "app/MailCarrier.h"

#include "platform/run/Log.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace {

class LoggingCarrier final : public MailCarrier {
public:
    platform::Result<void> sendemail(const MailMessage& message) override
    {
        platform::log(fmt::format("MailNotification: would send {} to {} by {}: {}", message.file,
            fmt::join(message.addresses, ", "), message.application.empty() ? "nobody" : message.application,
            message.subject));
        return {};
    }
};

struct Installed {
    platform::Mutex mutex{platform::LockRank::leaf};
    std::shared_ptr<MailCarrier> carrier ZR_GUARDED_BY(mutex) = std::make_shared<LoggingCarrier>();
};

Installed& installed()
{
    static const platform::NeverDestroyed<Installed> only;
    return *only;
}

} // namespace

std::shared_ptr<MailCarrier> MailCarrier::shared()
{
    platform::Lock lock(installed().mutex);
    return installed().carrier;
}

std::shared_ptr<MailCarrier> MailCarrier::install(std::shared_ptr<MailCarrier> carrier)
{
    if (!carrier)
        carrier = std::make_shared<LoggingCarrier>();
    platform::Lock lock(installed().mutex);
    return std::exchange(installed().carrier, std::move(carrier));
}
