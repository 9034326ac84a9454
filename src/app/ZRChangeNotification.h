// Whether others are to be told by mail that the Me card has changed.
#pragma once

#include "app/ZREmailNotification.h"
#include "store/ZRSafeNotificationCenter.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// What the program around the library shows to its user: an alert, and a panel with the groups to tell, a
/// subject, a message and a send button.
///
/// Ownership: shared by the ZRChangeNotification and whoever made it.
/// Threads:   called on the main queue.
/// Errors:    none may be raised.
class ZR_EXPORT ZRChangeNotificationHost {
public:
    struct Question {
        std::string title;
        std::string message;
        std::string notify;
        std::string cancel;
    };

    virtual ~ZRChangeNotificationHost() = default;
    /// Returns without waiting for the user. Calls `answered` once, on the main queue, with true for notify,
    /// and lets go of it.
    virtual void askUser(const Question& question, std::function<void(bool notify)> answered) = 0;
    virtual void showPanel() = 0;
    virtual void hidePanel() = 0;
    /// The text that tells how many messages there will be, and whether the send button is on.
    virtual void showEmailCount(const std::string& text, bool sendEnabled) = 0;
};

/// Watches the Me card, asks the user whether to tell others of a change, and runs the panel by which they
/// choose whom.
///
/// It is no part of a save: it hears of one like anybody else. It works only in programs that install a host
/// and ask for the shared one.
///
/// Ownership: shares the roster and the host; the shared one lives as long as the process.
/// Threads:   the main queue; the shared one may be asked for on any thread.
/// Errors:    none; what cannot be sent is logged.
class ZR_EXPORT ZRChangeNotification final : public platform::Object {
public:
    /// The one for the shared roster; absent when there is no such roster. It begins to hear of changes at
    /// the first asking at which the preference is on.
    static platform::Ref<ZRChangeNotification> sharedChangeNotification();
    static platform::Ref<ZRChangeNotification> initWithRoster(platform::Ref<ZRRoster> roster);

    /// Without a host nobody is asked, and nothing is remembered as told.
    void setHost(std::shared_ptr<ZRChangeNotificationHost> host) { _host = std::move(host); }

    /// The preference "ZRMailNotificationEnabled".
    static bool enabled();
    /// Observes the roster's changes, from this process and from others, if that is preferred.
    void observeChanges();
    /// Asks the user when the notification names the Me card and its vCard is not the one last told.
    void databaseChanged(const platform::Notification& notification);

    /// Whether the Me card is another than the one last told, or has another vCard. False without a vCard,
    /// since there would be nothing to send.
    bool _checkIfMeRecordHasChanged();
    /// Remembers the present Me card as told, and the selected groups.
    void updateDefaults();
    /// Nothing while the user is busy with this already, or when there is no ordinary group to tell.
    void askUserToNotify(const platform::Object* sender = nullptr);

    /// Opens the panel for the selected groups.
    void showNotificationPanel(const platform::Object* sender = nullptr);
    /// Opens the panel for a message to this person alone.
    void requestIndividualUpdateFrom(const std::string& address, platform::Ref<ZRPerson> person);
    /// Sends and closes the panel; nothing when there is nobody to send to.
    void send(const platform::Object* sender = nullptr);
    void cancel(const platform::Object* sender = nullptr);
    /// Counts anew, has the host show the count, and answers whether the send button is on.
    bool sendEnabled(const platform::Object* sender = nullptr);

    /// The ordinary groups: neither smart nor subscribed.
    std::vector<platform::Ref<ZRGroup>> simpleGroups() const;
    /// Those of them that are told, as chosen last, also in earlier processes.
    std::vector<platform::Ref<ZRGroup>> selectedGroups() const;
    void setSelectedGroups(const std::vector<platform::Ref<ZRGroup>>& groups);
    /// The message that the panel is about; absent while none is open.
    platform::Ref<ZREmailNotification> emailNotification() const { return _emailNotification; }
    /// How many messages would be sent; zero while no panel is open.
    std::size_t emailCount() const { return _emailNotification ? _emailNotification->emailCount() : 0; }

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    explicit ZRChangeNotification(platform::Ref<ZRRoster> roster);
    ~ZRChangeNotification() override;

    void openPanel();
    void closePanel();

    const platform::Ref<ZRRoster> _roster;
    std::shared_ptr<ZRChangeNotificationHost> _host;
    /// By their ids: a group may be deleted meanwhile.
    std::set<std::string, std::less<>> _selectedGroups;
    /// There while the panel is.
    platform::Ref<ZREmailNotification> _emailNotification;
    /// The panel is about one person instead of the groups.
    bool _oneEmail = false;
    bool _isAsking = false;
    platform::Mutex _mutex;
    std::vector<platform::Ref<ZRSafeNotificationEntry>> _entries ZR_GUARDED_BY(_mutex);
};
