// Tells of each change to the contacts, by whatever program, from a loop of our own around poll(), over the
// object interface. It ends with its input (Control-D).
//
//   c++ -std=c++20 watch.cpp -o watch $(pkg-config --cflags --libs roster)
//   ./watch
#include <roster/core/ZRConstants.h>
#include <roster/core/ZRMainQueue.h>
#include <roster/core/ZRPerson.h>
#include <roster/store/ZRRoster.h>
#include <roster/store/ZRSafeNotificationCenter.h>

#include <array>
#include <iostream>

#include <poll.h>
#include <unistd.h>

namespace {

/// Called by ZRMainQueueDrain, so on our own thread. The records can be asked already.
void tell(ZRRoster& roster, const platform::Value& details)
{
    for (const auto* list : {kZRInsertedRecords, kZRUpdatedRecords})
        for (const platform::Value& id : details[list].asArray()) {
            const auto record = roster.recordForUniqueId(id.asText());
            if (const auto* person = dynamic_cast<const ZRPerson*>(record.get()))
                std::cout << id.asText() << " is " << person->compositeName() << std::endl;
        }
    for (const platform::Value& id : details[kZRDeletedRecords].asArray())
        std::cout << id.asText() << " is gone" << std::endl;
}

/// Serves the roster until there is no more input.
int serve(int queue)
{
    std::array<pollfd, 2> waiting{{{queue, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    while (poll(waiting.data(), waiting.size(), -1) >= 0) {
        if (waiting[0].revents)
            ZRMainQueueDrain();
        std::array<char, 256> ignored;
        if (waiting[1].revents && read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0)
            return 0;
    }
    std::cerr << "watch: cannot wait\n";
    return 1;
}

} // namespace

int main()
{
    const int queue =
        ZRMainQueueGetFileDescriptor(); // before the roster: from now on we are who serves its queue
    const auto roster = ZRRoster::sharedRoster();
    if (!roster) {
        std::cerr << "watch: the contacts cannot be opened\n";
        return 3;
    }
    const auto center = ZRSafeNotificationCenter::defaultCenter();
    const auto entry = center->addSafeObserver(
        roster.get(), [&roster](const platform::Notification& notice) { tell(*roster, notice.userInfo); },
        kZRDatabaseChangedExternallyNotification, roster.get());
    std::cout << "watching" << std::endl;
    const int status = serve(queue);
    center->removeObserver(entry);
    return status;
}
