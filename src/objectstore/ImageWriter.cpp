// How images reach the tables.
#include "objectstore/ImageWriter.h"

#include "objectstore/ImageReader.h"
#include "objectstore/RowReader.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/StoreWrite.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

namespace {

constexpr std::string_view kAmongKeys = "IN (SELECT value FROM json_each(?))";

/// To be bound as one value, like the keys of `jsonOf`.
std::string jsonOfTexts(std::span<const std::string> texts)
{
    std::string json = "[";
    for (const auto& text : texts) {
        json += json.size() > 1 ? ",\"" : "\"";
        for (const char c : text)
            if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ')
                json += fmt::format("\\u{:04x}", static_cast<unsigned char>(c));
            else
                json += c;
        json += '"';
    }
    return json + "]";
}

} // namespace

/// One object of an image. Texts lie in the image.
struct ImageWriter::Part {
    const Entity* entity = nullptr;
    std::vector<std::pair<const Slot*, FieldValue>> fields;
    std::vector<std::pair<const Slot*, ImageReference>> references;
    std::vector<std::pair<const Slot*, FieldValue>> large;
};

ImageWriter::ImageWriter(StoreState& store, const ImageModel& model)
    : _store(store)
    , _model(model)
    , _version(store.commitNumber + 1)
    , _sequence(store.connection->integer("SELECT sequence FROM store_state WHERE id = 1"))
{
}

void ImageWriter::finish()
{
    for (auto& [entity, index] : _textIndexes)
        index.mergeSegments();
    sqlite::Use write(prepared("UPDATE store_state SET commitNumber = ?, sequence = ? WHERE id = 1"));
    write->bind(1, _version).bind(2, _sequence).run();
}

TextIndex& ImageWriter::textIndex(const Entity& entity)
{
    return _textIndexes.try_emplace(&entity, _store, entity).first->second;
}

/// The objects of an image; keys that the model has no more are passed over.
std::vector<ImageWriter::Part> ImageWriter::read(std::string_view image)
{
    std::vector<Part> parts;
    ImageItems items(image);
    for (ImageItem item; items.next(item);) {
        if (item.kind == ImageItem::Kind::object) {
            parts.emplace_back().entity = _model.model().entity(item.key);
            continue;
        }
        const Entity* entity = parts.empty() ? nullptr : parts.back().entity;
        const Slot* slot = entity ? entity->slot(item.key) : nullptr;
        if (!slot)
            continue;
        if (item.kind == ImageItem::Kind::field)
            parts.back().fields.emplace_back(slot, item.value);
        else if (item.kind == ImageItem::Kind::large)
            parts.front().large.emplace_back(parts.front().entity->slot(item.key), item.value);
        else if (item.kind == ImageItem::Kind::reference)
            parts.back().references.emplace_back(slot, std::move(item.reference));
    }
    std::erase_if(parts, [](const Part& part) { return !part.entity || part.entity->isAbstract(); });
    return parts;
}

/// The root and its parts.
std::vector<ImageWriter::Part> ImageWriter::readContent(std::string_view image)
{
    auto parts = read(image);
    if (parts.empty() || parts.front().entity->owner())
        throw StoreFailure(
            storeError(StoreFault::corrupt, "the history keeps a record of a kind unknown here"));
    return parts;
}

// ---- rows

void ImageWriter::writeRow(const Part& part, std::int64_t key, const Slot* owner, std::int64_t root)
{
    const Entity& entity = *part.entity;
    std::vector<FieldValue> row(entity.fields().size());
    for (const auto& [slot, value] : part.fields)
        if (slot->hasColumn())
            row[slot->field] = value;
    const auto refer = [&](const Slot& slot, std::int64_t to) {
        row[slot.field].kind = to ? FieldKind::integer : FieldKind::absent;
        row[slot.field].integer = to;
    };
    for (const auto& [slot, reference] : part.references)
        if (slot->hasColumn())
            refer(*slot, resolve(reference, root));
    if (owner)
        refer(*owner, root);
    sqlite::Use insert(prepared(insertSQL(_store, entity)));
    insert->bind(1, key).bind(2, _version).bind(3, _store.numberOf(entity));
    for (std::size_t i = 0; i < row.size(); ++i)
        bindField(*insert, static_cast<int>(i) + 4, row[i]);
    insert->run();
    if (const Slot* text = entity.textIndex(); text && owner)
        textIndex(entity).add(root, row[text->field].bytes);
}

void ImageWriter::writeLarge(const Part& part, std::int64_t key)
{
    for (const Slot* slot : part.entity->slots()) {
        if (slot->kind != SlotKind::largeAttribute)
            continue;
        sqlite::Use clear(prepared(fmt::format("DELETE FROM {} WHERE \"_key\" = ?", slot->table)));
        clear->bind(1, key).run();
    }
    for (const auto& [slot, value] : part.large) {
        sqlite::Use write(prepared(fmt::format("INSERT OR REPLACE INTO {} VALUES(?, ?)", slot->table)));
        write->bind(1, key);
        bindField(*write, 2, value);
        write->run();
    }
}

void ImageWriter::writeParts(std::vector<Part>& parts, std::int64_t root)
{
    for (auto part = parts.begin() + 1; part != parts.end(); ++part)
        writeRow(*part, ++_sequence, part->entity->owner(), root);
}

bool ImageWriter::isTaken(const Family& family, std::int64_t key)
{
    sqlite::Use find(prepared(fmt::format("SELECT 1 FROM {} WHERE \"_key\" = ?", family.table)));
    find->bind(1, key);
    return find->step();
}

std::int64_t ImageWriter::insert(std::string_view content, std::int64_t formerKey)
{
    auto parts = readContent(content);
    const Part& root = parts.front();
    const bool isFree =
        formerKey > 0 && formerKey <= _sequence && !isTaken(*root.entity->family(), formerKey);
    const std::int64_t key = isFree ? formerKey : ++_sequence;
    sqlite::Use revive(prepared("DELETE FROM store_deletion WHERE key = ?"));
    revive->bind(1, key).run();
    writeRow(root, key, nullptr, key);
    _inserted.insert(key);
    if (root.entity->hasLarge() && !root.large.empty())
        writeLarge(root, key);
    writeParts(parts, key);
    return key;
}

void ImageWriter::updateRow(const Part& part, std::int64_t key)
{
    const Entity& entity = *part.entity;
    std::vector<FieldValue> row(entity.fields().size());
    for (const auto& [slot, value] : part.fields)
        if (slot->hasColumn())
            row[slot->field] = value;
    const RowRef now = findRow(_store, *entity.family(), key);
    std::string sql = fmt::format("UPDATE {} SET \"_version\" = ?", entity.family()->table);
    for (const auto& [slot, isCounted, bits] : _model.fieldsOf(entity)) {
        if (FieldValue& field = row[slot->field]; bits && now && field.kind == FieldKind::integer)
            field.integer = (field.integer & ~bits) | (now->integer(slot->field) & bits);
        sql += fmt::format(", {} = ?", slot->column);
    }
    sqlite::Use update(prepared(sql + " WHERE \"_key\" = ?"));
    int parameter = 0;
    update->bind(++parameter, _version);
    for (const FieldValue& field : row)
        bindField(*update, ++parameter, field);
    update->bind(++parameter, key).run();
}

void ImageWriter::replaceContent(std::int64_t key, std::string_view content)
{
    auto parts = readContent(content);
    const ImageModel::Roots& roots = rootsOfKey(key);
    // Choices rest on entries by identifier, and the entries get new rows.
    const auto before = ImageReader(_store, _model).read(std::span(&key, 1), ImageReader::Want::images);
    removeParts(roots, jsonOf(std::span(&key, 1)));
    updateRow(parts.front(), key);
    writeLarge(parts.front(), key);
    writeParts(parts, key);
    if (before.empty() || before.front().ties.empty())
        return;
    clearTies(std::span(&key, 1));
    addTies(key, before.front().ties);
}

// ---- removing

void ImageWriter::removeParts(const ImageModel::Roots& roots, const std::string& keys)
{
    for (const auto& parts : roots.parts) {
        for (const Entity* entity : parts.family->entities)
            if (entity->textIndex() && !entity->isAbstract())
                textIndex(*entity).removeAll(keys);
        sqlite::Use remove(prepared(
            fmt::format("DELETE FROM {} WHERE {} {}", parts.family->table, parts.by->column, kAmongKeys)));
        remove->bindText(1, keys).run();
    }
}

/// Both ends of a link are newer without it.
void ImageWriter::cutLinks(const Slot& slot, const std::string& keys)
{
    for (const Family* family : slot.destination->families()) {
        sqlite::Use touchFar(prepared(
            fmt::format("UPDATE {} SET \"_version\" = ? WHERE \"_key\" IN (SELECT {} FROM {} WHERE {} {})",
                family->table, slot.farColumn, slot.table, slot.column, kAmongKeys)));
        touchFar->bind(1, _version).bindText(2, keys).run();
    }
    sqlite::Use cut(prepared(fmt::format("DELETE FROM {} WHERE {} {}", slot.table, slot.column, kAmongKeys)));
    cut->bindText(1, keys).run();
}

void ImageWriter::removeTies(const ImageModel::Roots& roots, const std::string& keys)
{
    for (const auto& ties : roots.ties) {
        const Slot& owner = *ties.family->owner;
        for (const Family* family : owner.destination->families()) {
            sqlite::Use touchOwner(prepared(fmt::format(
                "UPDATE {} SET \"_version\" = ? WHERE \"_key\" IN (SELECT {} FROM {} WHERE {} {})",
                family->table, owner.column, ties.family->table, ties.by->column, kAmongKeys)));
            touchOwner->bind(1, _version).bindText(2, keys).run();
        }
        sqlite::Use remove(prepared(
            fmt::format("DELETE FROM {} WHERE {} {}", ties.family->table, ties.by->column, kAmongKeys)));
        remove->bindText(1, keys).run();
    }
    for (const Slot* slot : roots.memberships)
        cutLinks(*slot, keys);
    for (const Slot* slot : roots.pointers)
        for (const Family* family : slot->destination->families()) {
            sqlite::Use release(
                prepared(fmt::format("UPDATE {0} SET {1} = NULL, \"_version\" = ? WHERE {1} {2}",
                    family->table, slot->inverse->column, kAmongKeys)));
            release->bind(1, _version).bindText(2, keys).run();
        }
}

void ImageWriter::remove(const ImageModel::Roots& roots, std::span<const std::int64_t> all)
{
    const std::string keys = jsonOf(all);
    removeParts(roots, keys);
    removeTies(roots, keys);
    for (const Slot* slot : roots.leads)
        cutLinks(*slot, keys);
    // What it owns of the ties of others.
    for (const Entity* entity : roots.family->entities)
        for (const Slot* slot : entity->slots())
            if (slot->holdsParts) {
                sqlite::Use remove(prepared(fmt::format("DELETE FROM {} WHERE {} {}",
                    slot->destination->family()->table, slot->inverse->column, kAmongKeys)));
                remove->bindText(1, keys).run();
            }
    for (const Slot* slot : roots.large) {
        sqlite::Use remove(
            prepared(fmt::format("DELETE FROM {} WHERE \"_key\" {}", slot->table, kAmongKeys)));
        remove->bindText(1, keys).run();
    }
    sqlite::Use record(prepared(fmt::format(
        "INSERT OR REPLACE INTO store_deletion(key, entity, version) SELECT \"_key\", \"_entity\", ?"
        " FROM {} WHERE \"_key\" {}",
        roots.family->table, kAmongKeys)));
    record->bind(1, _version).bindText(2, keys).run();
    sqlite::Use remove(
        prepared(fmt::format("DELETE FROM {} WHERE \"_key\" {}", roots.family->table, kAmongKeys)));
    remove->bindText(1, keys).run();
}

void ImageWriter::removePlain(const Slot& slot, std::span<const std::string> texts)
{
    const std::string& table = slot.entity->family()->table;
    const std::string all = jsonOfTexts(texts);
    sqlite::Use record(prepared(fmt::format(
        "INSERT OR REPLACE INTO store_deletion(key, entity, version) SELECT \"_key\", \"_entity\", ?"
        " FROM {} WHERE {} {}",
        table, slot.column, kAmongKeys)));
    record->bind(1, _version).bindText(2, all).run();
    sqlite::Use remove(prepared(fmt::format("DELETE FROM {} WHERE {} {}", table, slot.column, kAmongKeys)));
    remove->bindText(1, all).run();
}

// ---- ties

const ImageModel::Roots& ImageWriter::rootsOfKey(std::int64_t key)
{
    for (const auto& roots : _model.roots())
        if (isTaken(*roots.family, key))
            return roots;
    throw StoreFailure(storeError(StoreFault::internal, "a record of the history is not there"));
}

void ImageWriter::touch(const Family& family, std::int64_t key)
{
    sqlite::Use bump(
        prepared(fmt::format("UPDATE {} SET \"_version\" = ? WHERE \"_key\" = ?", family.table)));
    bump->bind(1, _version).bind(2, key).run();
}

std::int64_t ImageWriter::keyIn(const Family& family, const Slot& slot, std::string_view text)
{
    sqlite::Use find(
        prepared(fmt::format("SELECT \"_key\" FROM {} WHERE ifnull({}, '') = ?", family.table, slot.column)));
    find->bindText(1, text);
    return find->step() ? find->integer(0) : 0;
}

void ImageWriter::link(const ImageModel::Roots& roots, std::int64_t key, const ImageItem& item)
{
    const auto slot = std::ranges::find(roots.memberships, item.key, [](const Slot* s) { return s->table; });
    if (slot == roots.memberships.end())
        return;
    const Slot& member = **slot;
    for (const Family* family : member.destination->families()) {
        const std::int64_t lead = keyIn(*family, *uniqueSlot(*member.destination), item.text);
        if (lead == 0 || lead == key)
            continue;
        sqlite::Use write(prepared(fmt::format(
            "INSERT OR IGNORE INTO {}({}, {}) VALUES(?, ?)", member.table, member.farColumn, member.column)));
        write->bind(1, lead).bind(2, key).run();
        touch(*family, lead);
    }
}

void ImageWriter::point(const ImageModel::Roots& roots, std::int64_t key, const ImageItem& item)
{
    const auto slot = std::ranges::find(roots.pointers, item.key, [](const Slot* s) { return s->key; });
    if (slot == roots.pointers.end())
        return;
    const Slot& toOne = *(*slot)->inverse;
    for (const Family* family : (*slot)->destination->families()) {
        const std::int64_t holder = keyIn(*family, *uniqueSlot(*(*slot)->destination), item.text);
        sqlite::Use write(prepared(
            fmt::format("UPDATE {0} SET {1} = ?, \"_version\" = ? WHERE \"_key\" = ? AND {1} IS NULL",
                family->table, toOne.column)));
        write->bind(1, key).bind(2, _version).bind(3, holder).run();
    }
}

void ImageWriter::clearTies(std::span<const std::int64_t> all)
{
    const std::string keys = jsonOf(all);
    for (const auto& roots : _model.roots())
        removeTies(roots, keys);
}

void ImageWriter::addTies(std::int64_t key, std::string_view ties)
{
    const ImageModel::Roots& roots = rootsOfKey(key);
    if (!_inserted.contains(key))
        touch(*roots.family, key);
    ImageItems items(ties);
    for (ImageItem item; items.next(item);)
        if (item.kind == ImageItem::Kind::link)
            link(roots, key, item);
        else if (item.kind == ImageItem::Kind::pointer)
            point(roots, key, item);
    for (const Part& part : read(ties))
        writeTie(roots, part, key);
}

/// A tie both ends of which are there, and the entry on which it rests.
void ImageWriter::writeTie(const ImageModel::Roots& roots, const Part& part, std::int64_t key)
{
    const auto table = std::ranges::find(roots.ties, part.entity->family(), &ImageModel::Found::family);
    const auto leads = [&](const auto& reference) { return resolve(reference.second, key) != 0; };
    if (table == roots.ties.end() || !std::ranges::all_of(part.references, leads))
        return;
    writeRow(part, ++_sequence, table->by, key);
    for (const auto& [slot, reference] : part.references)
        if (slot == part.entity->owner())
            for (const Family* family : slot->destination->families())
                touch(*family, resolve(reference, key));
}

// ---- what references lead to

std::int64_t ImageWriter::resolve(const ImageReference& reference, std::int64_t root)
{
    const Entity* entity = _model.model().entity(reference.entity);
    if (!entity || !entity->family())
        return 0;
    switch (reference.kind) {
    case ImageReference::Kind::shared:
        return sharedObject(reference, *entity);
    case ImageReference::Kind::root: {
        const Slot* slot = uniqueSlot(*entity);
        return slot && !reference.name.empty() ? keyIn(*entity->family(), *slot, reference.name) : 0;
    }
    case ImageReference::Kind::part:
        break;
    }
    if (!entity->owner() || !entity->unit())
        return 0;
    sqlite::Use find(prepared(fmt::format("SELECT \"_key\" FROM {} WHERE {} = ? AND {} = ?",
        entity->family()->table, entity->owner()->column, entity->unit().identifier->column)));
    find->bind(1, root).bindText(2, reference.name);
    return find->step() ? find->integer(0) : 0;
}

/// Made where it is missing: a definition that was deleted meanwhile is needed again.
std::int64_t ImageWriter::sharedObject(const ImageReference& reference, const Entity& entity)
{
    const std::string bytes = encodedReference(reference);
    if (const auto known = _shared.find(bytes); known != _shared.end())
        return known->second;
    Part part;
    part.entity = &entity;
    for (const auto& [key, value] : reference.fields)
        if (const Slot* slot = entity.slot(key))
            part.fields.emplace_back(slot, value);
    std::string sql = fmt::format(
        "SELECT \"_key\" FROM {} WHERE \"_entity\" = {}", entity.family()->table, _store.numberOf(entity));
    for (const Slot* slot : entity.sharedBy())
        sql += fmt::format(" AND {} IS ?", slot->column);
    std::int64_t key = 0;
    {
        sqlite::Use find(prepared(sql));
        int parameter = 0;
        for (const Slot* slot : entity.sharedBy()) {
            const auto at =
                std::ranges::find(part.fields, slot, [](const auto& field) { return field.first; });
            bindField(*find, ++parameter, at == part.fields.end() ? FieldValue{} : at->second);
        }
        key = find->step() ? find->integer(0) : 0;
    }
    if (key == 0)
        writeRow(part, key = ++_sequence, nullptr, 0);
    _shared.emplace(bytes, key);
    return key;
}

} // namespace objectstore
