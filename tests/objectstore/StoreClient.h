// A context that is driven by words: the same in this process and behind a pipe in another one.
#pragma once

#include "objectstore/TortureModel.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace test {

using Words = std::vector<std::string>;

/// Does what it is told with one context, and answers in text.
class StoreClient {
public:
    virtual ~StoreClient() = default;
    virtual std::string ask(const Words& words) = 0;
};

/// Works with a context of this process.
class LocalClient final : public StoreClient {
public:
    explicit LocalClient(platform::Ref<os::StoreContext> context) : _context(std::move(context)) { }

    std::string ask(const Words& words) override
    {
        try {
            return answer(words);
        } catch (const std::exception& failure) {
            return std::string("failed: ") + failure.what();
        }
    }

private:
    using Predicate = os::StorePredicate;

    std::string answer(const Words& words)
    {
        const auto& what = words[0];
        if (what == "save")
            return done(_context->save());
        if (what == "view")
            return view();
        if (what == "find")
            return find(words[1], words[2]);
        if (what == "person")
            return addPerson(words[1]);
        if (what == "team") {
            _context->insertObjectOfEntity("Team")->setValueForKey("uniqueId", words[1]);
            return "ok";
        }
        const auto object = one(words[1]);
        if (what == "delete")
            _context->deleteObject(*object);
        else if (what == "set")
            object->setValueForKeyPath(
                words[2], words[3].empty() ? platform::Value() : platform::Value(words[3]));
        else if (what == "link")
            object->addObject(object->slot("teams"), *one(words[2]));
        else if (what == "unlink")
            object->removeObject(object->slot("teams"), *one(words[2]));
        else if (what == "phones")
            rewritePhones(*object, words);
        else if (what == "phone")
            editPhone(*object, words[2], words[3]);
        else
            throw std::runtime_error("unknown word " + what);
        return "ok";
    }

    static std::string done(const platform::Result<void>& result)
    {
        return result ? "ok" : "failed: " + result.error().text;
    }

    os::ObjectList fetch(std::string_view entity, os::PredicateRef predicate = nullptr)
    {
        return expected(
            _context->runFetch(os::StoreFetch(*tortureModel()->entity(entity), std::move(predicate))));
    }

    os::ObjectRef one(const std::string& uniqueId)
    {
        auto found = fetch("Record", Predicate::compare("uniqueId", os::Comparator::equal, uniqueId));
        if (found.size() != 1)
            throw std::runtime_error(std::to_string(found.size()) + " objects called " + uniqueId);
        return found.front();
    }

    std::string addPerson(const std::string& uniqueId)
    {
        const auto person = _context->insertObjectOfEntity("Person");
        person->setValueForKey("uniqueId", uniqueId);
        const auto index = _context->insertObjectOfEntity("Index");
        index->setRelated(index->slot("person"), person.get());
        return "ok";
    }

    /// As a multi-value is written: all rows go, and come back under the identifiers that they had.
    void rewritePhones(os::StoreObject& person, const Words& words)
    {
        for (const auto& phone : person.objects(person.slot("phones")))
            _context->deleteObject(*phone);
        for (std::size_t i = 2; i + 2 < words.size(); i += 3) {
            const auto phone = _context->insertObjectOfEntity("Phone");
            phone->setRelated(phone->slot("owner"), &person);
            phone->setValueForKey("uniqueId", words[i]);
            phone->setValueForKey("label", words[i + 1]);
            phone->setValueForKey("number", words[i + 2]);
            phone->setValueForKey("place", static_cast<int>(i / 3));
        }
    }

    void editPhone(os::StoreObject& person, const std::string& identifier, const std::string& number)
    {
        for (const auto& phone : person.objects(person.slot("phones")))
            if (phone->text(phone->slot("uniqueId")) == identifier)
                return phone->setValueForKey("number", number);
        throw std::runtime_error("no phone " + identifier);
    }

    /// One line a person, "uniqueId name city text {phones} {teams}", then one a team; sorted.
    std::string view()
    {
        std::vector<std::string> lines;
        for (const auto& person : fetch("Person"))
            lines.push_back(line(*person));
        for (const auto& team : fetch("Team"))
            lines.push_back(textOf(*team, "uniqueId"));
        return joined(lines, "\n");
    }

    static std::string line(os::StoreObject& person)
    {
        std::vector<std::string> phones, teams;
        for (const auto& phone : person.objects(person.slot("phones")))
            phones.push_back(
                textOf(*phone, "uniqueId") + "=" + textOf(*phone, "label") + ":" + textOf(*phone, "number"));
        for (const auto& team : person.objects(person.slot("teams")))
            teams.push_back(textOf(*team, "uniqueId"));
        return textOf(person, "uniqueId") + " " + textOf(person, "name") + " " + textOf(person, "city") + " "
            + textOf(person, "index.text") + " {" + joined(phones, ",") + "} {" + joined(teams, ",") + "}";
    }

    static std::string textOf(os::StoreObject& object, std::string_view path)
    {
        return std::string(object.valueForKeyPath(path).asText());
    }

    static std::string joined(std::vector<std::string>& parts, const char* separator)
    {
        std::sort(parts.begin(), parts.end());
        std::string text;
        for (const auto& part : parts)
            text += (text.empty() ? "" : separator) + part;
        return text;
    }

    std::string find(const std::string& how, const std::string& what)
    {
        const auto contains = [&](const char* key) {
            return Predicate::compare(key, os::Comparator::contains, what);
        };
        os::PredicateRef predicate;
        if (how == "name")
            predicate = Predicate::compare("name", os::Comparator::beginsWith, what);
        else if (how == "text")
            predicate = contains("index.text");
        else if (how == "phone")
            predicate = Predicate::rows("phones", os::Rows::some, contains("number"));
        else if (how == "no phone")
            predicate = Predicate::rows("phones", os::Rows::none, contains("number"));
        else if (how == "team")
            predicate = Predicate::rows("teams", os::Rows::some, contains("uniqueId"));
        else if (how == "no city")
            predicate = Predicate::isAbsent("city");
        const auto people = fetch("Person", predicate);
        const auto count =
            expected(_context->countFetch(os::StoreFetch(*tortureModel()->entity("Person"), predicate)));
        std::vector<std::string> names;
        for (const auto& person : people)
            names.push_back(textOf(*person, "uniqueId"));
        return count == people.size() ? joined(names, " ") : "count " + std::to_string(count);
    }

    platform::Ref<os::StoreContext> _context;
};

/// A process of its own with a context on the store at `path`. Start all before this process opens a store.
class ProcessClient final : public StoreClient {
public:
    explicit ProcessClient(const std::string& path)
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error("no socket pair");
        _child = fork();
        if (_child == 0) {
            close(ends[0]);
            _exit(served(path, ends[1]));
        }
        close(ends[1]);
        _socket = ends[0];
    }
    ProcessClient(const ProcessClient&) = delete;
    ProcessClient& operator=(const ProcessClient&) = delete;
    /// Says goodbye in words: the processes started later hold this end of the socket too.
    ~ProcessClient() override
    {
        send(_socket, "");
        close(_socket);
        waitpid(_child, nullptr, 0);
    }

    std::string ask(const Words& words) override
    {
        std::string message;
        for (const auto& word : words)
            message += word + '\0';
        send(_socket, message);
        return receive(_socket);
    }

private:
    /// No failure may get out: it would run the rest of the tests a second time.
    static int served(const std::string& path, int socket) noexcept
    {
        try {
            serve(path, socket);
            return 0;
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "client: %s\n", failure.what());
            return 1;
        }
    }

    static void serve(const std::string& path, int socket)
    {
        const Store store(path);
        LocalClient client(store.makeContext());
        for (std::string message = receive(socket); !message.empty(); message = receive(socket)) {
            Words words;
            for (std::size_t at = 0; at < message.size(); at += words.back().size() + 1)
                words.emplace_back(message.c_str() + at);
            send(socket, client.ask(words));
        }
    }

    static void send(int socket, const std::string& message)
    {
        const auto size = static_cast<std::uint32_t>(message.size());
        std::string frame(reinterpret_cast<const char*>(&size), sizeof size);
        frame += message;
        for (std::size_t sent = 0; sent < frame.size();) {
            const auto count = ::send(socket, frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL);
            if (count <= 0)
                throw std::runtime_error("the other end has gone");
            sent += static_cast<std::size_t>(count);
        }
    }

    /// Empty when the other end has gone.
    static std::string receive(int socket)
    {
        std::uint32_t size = 0;
        if (recv(socket, &size, sizeof size, MSG_WAITALL) != sizeof size)
            return {};
        std::string message(size, '\0');
        if (size == 0) // which a receive of nothing would wait for
            return {};
        return recv(socket, message.data(), size, MSG_WAITALL) == static_cast<ssize_t>(size) ? message
                                                                                             : std::string();
    }

    pid_t _child = -1;
    int _socket = -1;
};

} // namespace test
