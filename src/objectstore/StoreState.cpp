// Which numbers stand for entities in a store.
#include "objectstore/StoreState.h"

#include <sys/stat.h>

namespace objectstore {

bool identityOf(const std::string& path, FileIdentity& identity)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return false;
    identity = {status.st_dev, status.st_ino};
    return true;
}

StoreState::~StoreState()
{
    // SQLite would remove the log by its name, and that name is the log of the new file by now.
    if (isReplaced())
        connection->keepLogWhenClosed();
    rows->release();
}

bool StoreState::isReplaced() const
{
    FileIdentity now;
    return !isInMemory && !(identityOf(path, now) && now == identity);
}

void StoreState::loadEntityNumbers(const Model& model, bool mayWrite)
{
    findSQL.assign(model.families().size(), {});
    insertSQL.assign(model.entities().size(), {});
    entityNumbers.assign(model.entities().size(), -1);
    entitiesByNumber.clear();
    std::int64_t next = 0;
    {
        sqlite::Use known(connection->prepared("SELECT number, name FROM store_entity ORDER BY number"));
        while (known->step()) {
            const std::int64_t number = known->integer(0);
            next = number + 1;
            const Entity* entity = model.entity(known->text(1));
            entitiesByNumber.resize(static_cast<std::size_t>(number) + 1);
            entitiesByNumber.back() = entity;
            if (entity)
                entityNumbers[entity->index()] = number;
        }
    }
    for (const Entity* entity : model.entities()) {
        if (!mayWrite || entity->isAbstract() || entityNumbers[entity->index()] >= 0)
            continue;
        sqlite::Use add(connection->prepared("INSERT INTO store_entity(number, name) VALUES(?, ?)"));
        add->bind(1, next).bindText(2, entity->name()).run();
        entityNumbers[entity->index()] = next++;
        entitiesByNumber.push_back(entity);
    }
}

const Entity* StoreState::entityNumbered(std::int64_t number) const
{
    const auto index = static_cast<std::size_t>(number);
    return index < entitiesByNumber.size() ? entitiesByNumber[index] : nullptr;
}

} // namespace objectstore
