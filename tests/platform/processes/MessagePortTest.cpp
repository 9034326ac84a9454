// Who gets a name, who is heard under it, and what callers of all kinds are answered.
#include "platform/processes/MessagePort.h"
#include "platform/files/PlainFileName.h"
#include "platform/processes/PortAddress.h"
#include "platform/processes/PortFrame.h"
#include "platform/processes/PortPeer.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "support/Forked.h"
#include "support/Process.h"
#include "support/Role.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <set>
#include <stdexcept>

using namespace platform;
using testing::ElementsAre;
using Reply = MessagePort::Reply;

namespace {

std::string freshName()
{
    return "test" + std::filesystem::path(test::freshPath("port")).filename().string();
}

/// Holds a name until it is killed; "taken" in the file named says that it got it, "refused" that it did not.
const test::Role holder("port-holder", [](const test::Words& words) {
    const auto port = MessagePort::serve(words.at(0),
        [](std::uint32_t, std::string_view data) { return std::string(data) + " from another process"; });
    std::ofstream(words.at(1) + ".part") << (port ? "taken" : "refused");
    std::filesystem::rename(words.at(1) + ".part", words.at(1));
    if (port)
        for (;;)
            pause();
    return std::string();
});

class Holder {
public:
    explicit Holder(const std::string& name)
        : _process({.words = test::roleWords("port-holder", {name, _answer})})
    {
    }
    std::string answer() const
    {
        EXPECT_TRUE(test::eventually([&] { return std::filesystem::exists(_answer); }));
        return test::bytesOf(_answer);
    }
    void kill()
    {
        _process.kill(SIGKILL);
        _process.wait();
    }

private:
    const std::string _answer = test::freshPath("holder");
    test::Process _process;
};

class MessagePortTest : public testing::Test {
protected:
    std::unique_ptr<ServedPort> serve()
    {
        auto port = MessagePort::serve(name, [this](std::uint32_t message, std::string_view data) {
            EXPECT_TRUE(MainQueue::shared().isMainThread());
            heard.add(std::to_string(message) + ":" + std::string(data.substr(0, 20)));
            return answer(std::string(data));
        });
        EXPECT_TRUE(port) << port.error().text;
        return std::move(*port);
    }

    Result<std::string> ask(std::string_view data, double wait = 60)
    {
        auto port = MessagePort::connect(name);
        return port ? port->send(5, data, 60, wait, Reply::wanted) : port.error();
    }

    /// A connection that says what no port says.
    int raw() const
    {
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const auto address = portAddressOf(*portSocketPath(name));
        EXPECT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        return socket;
    }

    const std::string name = freshName();
    std::function<std::string(std::string)> answer = [](const std::string& data) { return "re: " + data; };
    test::Heard heard;
};

TEST_F(MessagePortTest, CarriesMessagesAndReplies)
{
    const auto port = serve();
    auto caller = MessagePort::connect(name);
    ASSERT_TRUE(caller);
    EXPECT_EQ(*caller->send(1, "", 60, 0, Reply::none), "");
    EXPECT_EQ(*caller->send(2, "two", 60, 60, Reply::wanted), "re: two");
    EXPECT_EQ(*caller->send(3, std::string("\0\n", 2), 60, 60, Reply::wanted), std::string("re: \0\n", 6));
    EXPECT_THAT(heard.texts(), ElementsAre("1:", "2:two", std::string("3:\0\n", 4)));
}

TEST_F(MessagePortTest, IsPrivate)
{
    const auto port = serve();
    const auto path = *portSocketPath(name);
    for (const auto& file : {path, path + ".lock"}) {
        EXPECT_EQ(test::modeOf(file), 0600U) << file;
    }
}

TEST_F(MessagePortTest, HoldsToItsBounds)
{
    const auto port = serve();
    answer = [](const std::string& data) { return std::to_string(data.size()); };
    EXPECT_EQ(*ask(std::string(kLargestPortMessage, 'x')), std::to_string(kLargestPortMessage));
    EXPECT_EQ(ask(std::string(kLargestPortMessage + 1, 'x')).error().code, EMSGSIZE);
    answer = [](const std::string& data) { return std::string(std::stoul(data), 'r'); };
    EXPECT_EQ(ask(std::to_string(kLargestPortReply))->size(), kLargestPortReply);
    EXPECT_EQ(ask(std::to_string(kLargestPortReply + 1)).error().code, EPIPE);
    EXPECT_TRUE(ask("1"));
}

TEST_F(MessagePortTest, HasOneHolder)
{
    auto port = serve();
    EXPECT_EQ(MessagePort::serve(name, {}).error().code, EADDRINUSE);
    EXPECT_EQ(Holder(name).answer(), "refused");
    EXPECT_EQ(*ask("still there"), "re: still there");
    port->invalidate();
    EXPECT_FALSE(port->isReachable());
    EXPECT_FALSE(MessagePort::connect(name));
    Holder other(name);
    EXPECT_EQ(other.answer(), "taken");
    EXPECT_EQ(*ask("data"), "data from another process");
}

// The killed one leaves its socket and its lock file behind; of many who want the name, one gets it.
TEST_F(MessagePortTest, PassesToExactlyOneAfterADeadHolder)
{
    Holder first(name);
    ASSERT_EQ(first.answer(), "taken");
    first.kill();
    ASSERT_TRUE(std::filesystem::exists(*portSocketPath(name)));
    EXPECT_EQ(MessagePort::connect(name).error().code, ECONNREFUSED);
    std::array<std::unique_ptr<Holder>, 6> rivals;
    for (auto& rival : rivals)
        rival = std::make_unique<Holder>(name);
    int taken = 0;
    for (const auto& rival : rivals)
        taken += rival->answer() == "taken";
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(*ask("data"), "data from another process");
}

TEST_F(MessagePortTest, EndsWaitingInTime)
{
    const auto port = serve();
    std::atomic<bool> mayAnswer = false;
    answer = [&](const std::string&) {
        EXPECT_TRUE(test::eventually([&] { return mayAnswer.load(); }));
        return std::string();
    };
    auto caller = MessagePort::connect(name);
    EXPECT_EQ(caller->send(1, "", 60, 0.01, Reply::wanted).error().code, ETIMEDOUT);
    EXPECT_FALSE(caller->isValid());
    EXPECT_EQ(caller->send(1, "", 1, 1, Reply::wanted).error().code, ENOTCONN);
    mayAnswer = true;
}

TEST_F(MessagePortTest, HangsUpOnWhoSpeaksNonsense)
{
    const auto port = serve();
    const PortFrame tooLong{.length = kLargestPortMessage + 1};
    PortFrame foreign;
    foreign.magic = 7;
    for (const auto& bytes : {std::string(100, 'x'), tooLong.with(""), foreign.with("abc")}) {
        const int socket = raw();
        ASSERT_EQ(send(socket, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        char byte = 0;
        EXPECT_LE(recv(socket, &byte, 1, 0), 0);
        close(socket);
    }
    EXPECT_EQ(*ask("x"), "re: x");
    EXPECT_EQ(heard.count(), 1U);
}

TEST_F(MessagePortTest, ReadsMessagesThatComeInAnyPieces)
{
    const auto port = serve();
    const auto bytes = PortFrame{.message = 8, .length = 3}.with("abc") + PortFrame{.message = 9}.with("");
    for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
        const int socket = raw();
        ASSERT_GT(send(socket, bytes.data(), cut, 0), 0);
        MainQueue::shared().sync([] {});
        ASSERT_GT(send(socket, bytes.data() + cut, bytes.size() - cut, 0), 0);
        // Hung up before the last was read: what was sent counts.
        close(socket);
        ASSERT_TRUE(heard.waitFor(2 * cut)) << cut;
    }
    const auto texts = heard.texts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "8:abc"), static_cast<long>(bytes.size() - 1));
}

TEST_F(MessagePortTest, SurvivesAHandlerThatThrows)
{
    const LogCapture log;
    const auto port = serve();
    answer = [](const std::string& data) -> std::string { throw std::runtime_error("cannot do " + data); };
    EXPECT_EQ(ask("this").error().code, EPIPE);
    EXPECT_TRUE(log.contains("cannot do this"));
    answer = [](const std::string&) { return std::string("fine"); };
    EXPECT_EQ(*ask("that"), "fine");
}

TEST_F(MessagePortTest, LetsTheHandlerEndItsOwnPort)
{
    auto port = serve();
    answer = [&](const std::string&) {
        port->invalidate();
        return std::string("gone");
    };
    EXPECT_FALSE(ask("x"));
    EXPECT_FALSE(port->isReachable());
}

// A child of the holder ends, and with it its copies of everything: the name is still the parent's.
TEST_F(MessagePortTest, StaysWithTheParentOfAForkedChild)
{
    auto port = serve();
    EXPECT_TRUE(test::inForkedChild([&] {
        const bool wasReachable = port->isReachable();
        port.reset();
        const auto own = MessagePort::serve(name + ".child", {});
        return !wasReachable && !own && own.error().code == ECANCELED;
    }));
    EXPECT_EQ(*ask("x"), "re: x");
    EXPECT_EQ(MessagePort::serve(name, {}).error().code, EADDRINUSE);
}

TEST(PlainFileNameTest, IsAFileNameOfItsOwnForAnyText)
{
    EXPECT_EQ(plainFileName("org.quillon.Roster.zrd"), "org.quillon.Roster.zrd");
    std::set<std::string> names;
    const std::vector<std::string> texts{"", ".", "..", "a/b", "a_b", "a:b", ".hidden", "_hidden",
        std::string(60, 'x'), std::string(61, 'x'), std::string(62, 'x'), "ü", std::string("\0", 1)};
    for (const auto& text : texts) {
        const auto file = plainFileName(text);
        EXPECT_LE(file.size(), 60U) << text;
        EXPECT_EQ(file.find('/'), std::string::npos) << text;
        EXPECT_NE(file.front(), '.') << text;
        names.insert(file);
    }
    EXPECT_EQ(names.size(), texts.size());
}

} // namespace
