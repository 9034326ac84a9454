// A context that is driven by words: the same in this process and behind a pipe in another one.
#pragma once

#include "objectstore/TestStore.h"
#include "support/Forked.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <sstream>
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
        if (what == "view")
            return view();
        if (what == "find")
            return find(words[1], words[2]);
        if (what == "save")
            must(_context->save());
        else if (what == "author")
            addAuthor(words[1]);
        else if (what == "book")
            _context->insertObjectOfEntity("Book")->setValueForKey("uniqueId", words[1]);
        else
            edit(*one(words[1]), words);
        return "ok";
    }

    void edit(StoreObject& object, const Words& words)
    {
        const auto& what = words[0];
        if (what == "delete")
            _context->deleteObject(object);
        else if (what == "set")
            object.setValueForKeyPath(words[2], words[3].empty() ? Value() : Value(words[3]));
        else if (what == "link")
            object.addObject(object.slot("books"), *one(words[2]));
        else if (what == "unlink")
            object.removeObject(object.slot("books"), *one(words[2]));
        else if (what == "handles")
            rewriteHandles(object, words);
        else if (what == "handle")
            editHandle(object, words[2], words[3]);
        else
            throw std::runtime_error("unknown word " + what);
    }

    ObjectRef one(const std::string& uniqueId)
    {
        auto found =
            fetchAll(*_context, "Item", Predicate::compare("uniqueId", os::Comparator::equal, uniqueId));
        if (found.size() != 1)
            throw std::runtime_error(std::to_string(found.size()) + " objects called " + uniqueId);
        return found.front();
    }

    void addAuthor(const std::string& uniqueId)
    {
        const auto author = _context->insertObjectOfEntity("Author");
        author->setValueForKey("uniqueId", uniqueId);
        const auto index = _context->insertObjectOfEntity("Index");
        index->setRelated(index->slot("author"), author.get());
    }

    /// As a multi-value is written: all rows go, and come back under the identifiers that they had.
    void rewriteHandles(StoreObject& author, const Words& words)
    {
        for (const auto& handle : author.objects(author.slot("handles")))
            _context->deleteObject(*handle);
        for (std::size_t i = 2; i + 1 < words.size(); i += 2)
            addHandle(*_context, author, {words[i], words[i + 1], static_cast<int>(i / 2)});
    }

    static void editHandle(StoreObject& author, const std::string& identifier, const std::string& text)
    {
        for (const auto& handle : author.objects(author.slot("handles")))
            if (textOf(*handle, "uniqueId") == identifier)
                return handle->setValueForKey("text", text);
        throw std::runtime_error("no handle " + identifier);
    }

    /// One line an author, "uniqueId name city text {handles} {books}", then one a book; sorted.
    std::string view()
    {
        std::vector<std::string> lines = texts(fetchAll(*_context, "Book"), "uniqueId");
        for (const auto& author : fetchAll(*_context, "Author"))
            lines.push_back(line(*author));
        return joined(lines, "\n");
    }

    static std::string line(StoreObject& author)
    {
        std::vector<std::string> handles, books = texts(author.objects(author.slot("books")), "uniqueId");
        for (const auto& handle : author.objects(author.slot("handles")))
            handles.push_back(textOf(*handle, "uniqueId") + "=" + textOf(*handle, "text"));
        return textOf(author, "uniqueId") + " " + textOf(author, "name") + " " + textOf(author, "city") + " "
            + textOf(author, "index.text") + " {" + joined(handles, ",") + "} {" + joined(books, ",") + "}";
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
        const std::map<std::string, os::PredicateRef> predicates{
            {"name", Predicate::compare("name", os::Comparator::beginsWith, what)},
            {"text", contains("index.text")},
            {"handle", Predicate::rows("handles", os::Rows::some, contains("text"))},
            {"no handle", Predicate::rows("handles", os::Rows::none, contains("text"))},
            {"book", Predicate::rows("books", os::Rows::some, contains("uniqueId"))},
            {"no city", Predicate::isAbsent("city")}};
        const os::StoreFetch fetch(entityNamed("Author"), predicates.at(how));
        auto names = texts(must(_context->runFetch(fetch)), "uniqueId");
        const auto count = must(_context->countFetch(fetch));
        return count == names.size() ? joined(names, " ") : "count " + std::to_string(count);
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
        _child = forkAmongSleepers();
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
            message += word + '\n';
        send(_socket, message);
        return receive(_socket);
    }

private:
    /// No failure may get out: it would run the rest of the tests a second time.
    static int served(const std::string& path, int socket) noexcept
    {
        try {
            const Store store(path);
            LocalClient client(store.makeContext());
            for (std::string message = receive(socket); !message.empty(); message = receive(socket)) {
                std::istringstream lines(message);
                Words words;
                for (std::string word; std::getline(lines, word);)
                    words.push_back(word);
                send(socket, client.ask(words));
            }
            return 0;
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "client: %s\n", failure.what());
            return 1;
        }
    }

    /// A message ends with a zero.
    static void send(int socket, const std::string& message)
    {
        for (std::size_t sent = 0; sent <= message.size();) {
            const auto count =
                ::send(socket, message.c_str() + sent, message.size() + 1 - sent, MSG_NOSIGNAL);
            if (count <= 0)
                throw std::runtime_error("the other end has gone");
            sent += static_cast<std::size_t>(count);
        }
    }

    /// Empty when the other end has gone. They take turns, so nothing stands behind the zero.
    static std::string receive(int socket)
    {
        std::string message;
        char part[4096];
        while (!message.ends_with('\0')) {
            const auto count = recv(socket, part, sizeof part, 0);
            if (count <= 0)
                return {};
            message.append(part, static_cast<std::size_t>(count));
        }
        message.pop_back();
        return message;
    }

    pid_t _child = -1;
    int _socket = -1;
};

} // namespace test
