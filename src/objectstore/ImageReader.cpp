// How images are put together, table by table.
#include "objectstore/ImageReader.h"

#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

namespace {

constexpr std::size_t kRootsAtOnce = 500;
constexpr int kFirstField = 3;

/// The fields of a row as a query brings them, and of one that is in memory.
struct QueriedFields {
    const sqlite::Statement& row;
    const Entity& entity;
    FieldValue operator()(const Slot& slot) const
    {
        return readField(row, kFirstField + entity.familyColumns()[slot.field]);
    }
};
struct RowFields {
    const Row& row;
    FieldValue operator()(const Slot& slot) const { return row.value(slot.field); }
};

/// The name that the rules give to a root.
template <class Fields>
std::string nameOfRoot(const ImageModel& model, const Entity& entity, const Fields& fields)
{
    for (const auto& keys : model.rules().names) {
        std::string name;
        for (const std::string_view key : keys) {
            const Slot* slot = entity.slot(key);
            const std::string_view text = slot ? fields(*slot).bytes : std::string_view();
            name.append(name.empty() || text.empty() ? "" : " ").append(text);
        }
        if (!name.empty())
            return name;
    }
    return {};
}

} // namespace

std::vector<ObjectImage> ImageReader::read(std::span<const std::int64_t> keys, Want want)
{
    _want = want;
    _references.clear();
    std::vector<ObjectImage> images;
    for (std::size_t from = 0; from < keys.size(); from += kRootsAtOnce) {
        readBatch(keys.subspan(from, std::min(kRootsAtOnce, keys.size() - from)));
        finishImages(images);
    }
    return images;
}

void ImageReader::finishImages(std::vector<ObjectImage>& images)
{
    for (auto& one : _building) {
        one.image.contentHash = one.content.value();
        one.image.tiesHash = one.ties.value();
        images.push_back(std::move(one.image));
    }
    _building.clear();
    _at.clear();
}

// ---- what is in memory

std::vector<ObjectImage> ImageReader::readInserted(std::span<const RowRef> rows)
{
    _want = Want::hashes;
    _references.clear();
    std::unordered_map<const ImageModel::Roots*, std::vector<std::int64_t>> keys;
    for (const auto& row : rows)
        if (const auto* roots = _model.rootsOf(row->entity()); roots && !row->entity().owner()) {
            addRoot(row->entity(), row->key(), *roots, RowFields{*row});
            keys[roots].push_back(row->key());
        }
    for (const auto& row : rows)
        if (row->entity().owner())
            addInsertedPart(*row);
    for (const auto& [roots, found] : keys)
        readTies(*roots, jsonOf(found));
    std::vector<ObjectImage> images;
    finishImages(images);
    return images;
}

void ImageReader::addInsertedPart(const Row& row)
{
    for (const auto& roots : _model.roots())
        for (const auto& parts : roots.parts)
            if (parts.family == row.entity().family())
                if (Building* one = building(row.integer(parts.by->field)); one && one->roots == &roots)
                    addRow(row.entity(), RowFields{row}, parts.by, *one, Section::content);
}

// ---- what is in tables

std::int64_t ImageReader::keyOf(std::string_view uniqueId)
{
    for (const auto& roots : _model.roots()) {
        sqlite::Use find(_store.connection->prepared(fmt::format(
            "SELECT \"_key\" FROM {} WHERE {} = ?", roots.family->table, roots.uniqueId->column)));
        find->bindText(1, uniqueId);
        if (find->step())
            return find->integer(0);
    }
    return 0;
}

void ImageReader::readBatch(std::span<const std::int64_t> keys)
{
    _building.clear();
    _at.clear();
    const std::string wanted = jsonOf(keys);
    for (const auto& roots : _model.roots()) {
        const std::size_t before = _building.size();
        readRoots(roots, wanted);
        if (_building.size() == before)
            continue;
        // Roots of several tables may have parts in one.
        std::vector<std::int64_t> found;
        for (std::size_t i = before; i < _building.size(); ++i)
            found.push_back(_building[i].image.key);
        const std::string all = jsonOf(found);
        for (const auto& parts : roots.parts)
            readParts(parts, all, Section::content);
        readTies(roots, all);
    }
}

/// And what lies in tables of its own.
void ImageReader::readTies(const ImageModel::Roots& roots, const std::string& keys)
{
    for (const Slot* slot : roots.large)
        readLarge(*slot, keys);
    for (const auto& ties : roots.ties)
        readParts(ties, keys, Section::ties);
    for (const Slot* slot : roots.memberships)
        readMemberships(*slot, keys);
    for (const Slot* slot : roots.pointers)
        readPointers(*slot, keys);
}

void ImageReader::readRoots(const ImageModel::Roots& roots, const std::string& keys)
{
    sqlite::Use find(_store.connection->prepared(
        fmt::format("SELECT {} FROM {} WHERE \"_key\" IN (SELECT value FROM json_each(?))",
            rowColumns(*roots.family), roots.family->table)));
    find->bindText(1, keys);
    while (find->step()) {
        const Entity* entity = _store.entityNumbered(find->integer(2));
        if (!entity)
            continue;
        addRoot(*entity, find->integer(0), roots, QueriedFields{*find, *entity});
    }
}

template <class Fields>
void ImageReader::addRoot(
    const Entity& entity, std::int64_t key, const ImageModel::Roots& roots, const Fields& fields)
{
    Building& one = _building.emplace_back();
    one.roots = &roots;
    one.image.key = key;
    one.image.entity = &entity;
    one.image.uniqueId = fields(*roots.uniqueId).bytes;
    one.image.name = nameOfRoot(_model, entity, fields);
    _at.emplace(key, _building.size() - 1);
    addRow(entity, fields, nullptr, one, Section::content);
}

ImageReader::Building* ImageReader::building(std::int64_t key)
{
    const auto at = _at.find(key);
    return at == _at.end() ? nullptr : &_building[at->second];
}

void ImageReader::readParts(const ImageModel::Found& parts, const std::string& keys, Section section)
{
    // Parts get new keys in the order of the image, and derived texts are made in the order of keys: any
    // other order, as that of the index on owners, would leave them other than what the parts say.
    sqlite::Use find(_store.connection->prepared(
        fmt::format("SELECT {} FROM {} WHERE {} IN (SELECT value FROM json_each(?)) ORDER BY \"_key\"",
            rowColumns(*parts.family), parts.family->table, parts.by->column)));
    find->bindText(1, keys);
    while (find->step()) {
        const Entity* entity = _store.entityNumbered(find->integer(2));
        if (!entity)
            continue;
        const QueriedFields fields{*find, *entity};
        if (Building* one = building(fields(*parts.by).integer))
            addRow(*entity, fields, parts.by, *one, section);
    }
}

template <class Fields>
void ImageReader::addRow(
    const Entity& entity, const Fields& fields, const Slot* owner, Building& into, Section section)
{
    // An entry of the text index comes and goes with what it is made of.
    const bool isCounted = !entity.textIndex();
    if (!isCounted && _want == Want::hashes)
        return;
    _bytes.clear();
    appendObject(_bytes, entity.name());
    _counted = _bytes;
    for (const ImageModel::Field& field : _model.fieldsOf(entity)) {
        if (field.slot == owner || (!field.isCounted && _want == Want::hashes))
            continue;
        FieldValue value = fields(*field.slot);
        if (value.kind == FieldKind::absent)
            continue;
        if (_want == Want::images)
            append(_bytes, *field.slot, value);
        if (!field.isCounted)
            continue;
        if (field.uncountedBits != 0 && value.kind == FieldKind::integer) {
            // No other bits are as good as no value.
            value.integer &= ~field.uncountedBits;
            if (value.integer == 0)
                continue;
        }
        append(_counted, *field.slot, value);
    }
    finishPart(into, section, isCounted);
}

void ImageReader::append(std::string& to, const Slot& slot, const FieldValue& value)
{
    if (slot.kind == SlotKind::toOne)
        appendReference(to, slot.key, reference(slot, value.integer));
    else
        appendField(to, ImageItem::Kind::field, slot.key, value);
}

void ImageReader::finishPart(Building& into, Section section, bool isCounted)
{
    if (isCounted)
        (section == Section::content ? into.content : into.ties).add(_counted);
    if (_want == Want::images)
        (section == Section::content ? into.image.content : into.image.ties) += _bytes;
}

void ImageReader::readLarge(const Slot& slot, const std::string& keys)
{
    sqlite::Use find(_store.connection->prepared(fmt::format(
        "SELECT \"_key\", value FROM {} WHERE \"_key\" IN (SELECT value FROM json_each(?))", slot.table)));
    find->bindText(1, keys);
    while (find->step()) {
        Building* one = building(find->integer(0));
        if (!one)
            continue;
        _bytes.clear();
        appendField(_bytes, ImageItem::Kind::large, slot.key, readField(*find, 1));
        _counted = _bytes;
        finishPart(*one, Section::content, true);
    }
}

void ImageReader::addTie(
    std::int64_t key, ImageItem::Kind kind, std::string_view name, std::string_view uniqueId)
{
    Building* one = building(key);
    if (!one)
        return;
    _bytes.clear();
    appendTie(_bytes, kind, name, uniqueId);
    _counted = _bytes;
    finishPart(*one, Section::ties, true);
}

void ImageReader::readMemberships(const Slot& slot, const std::string& keys)
{
    for (const Family* family : slot.destination->families()) {
        const Slot* uniqueId = uniqueSlot(*slot.destination);
        sqlite::Use find(_store.connection->prepared(
            fmt::format("SELECT j.{0}, f.{1} FROM {2} AS j JOIN {3} AS f ON f.\"_key\" = j.{4}"
                        " WHERE j.{0} IN (SELECT value FROM json_each(?))",
                slot.column, uniqueId->column, slot.table, family->table, slot.farColumn)));
        find->bindText(1, keys);
        while (find->step())
            addTie(find->integer(0), ImageItem::Kind::link, slot.table, find->text(1));
    }
}

void ImageReader::readPointers(const Slot& slot, const std::string& keys)
{
    const Slot* uniqueId = uniqueSlot(*slot.destination);
    for (const Family* family : slot.destination->families()) {
        sqlite::Use find(_store.connection->prepared(
            fmt::format("SELECT {0}, {1} FROM {2} WHERE {0} IN (SELECT value FROM json_each(?))",
                slot.inverse->column, uniqueId->column, family->table)));
        find->bindText(1, keys);
        while (find->step())
            addTie(find->integer(0), ImageItem::Kind::pointer, slot.key, find->text(1));
    }
}

/// Few objects are referred to again and again: services, definitions, groups.
const std::string& ImageReader::reference(const Slot& slot, std::int64_t key)
{
    const auto known = _references.find(key);
    if (known != _references.end())
        return known->second;
    return _references.emplace(key, encodedReference(referenceTo(*slot.destination, key))).first->second;
}

ImageReference ImageReader::referenceTo(const Entity& destination, std::int64_t key)
{
    ImageReference to;
    to.entity = destination.name();
    const bool isShared = !destination.sharedBy().empty();
    to.kind = isShared                   ? ImageReference::Kind::shared
        : destination.owner() != nullptr ? ImageReference::Kind::part
                                         : ImageReference::Kind::root;
    const RowRef row = findRow(_store, *destination.family(), key);
    if (!row)
        return to;
    to.entity = row->entity().name();
    if (!isShared) {
        const Slot* name = destination.owner() ? destination.unit().identifier : uniqueSlot(destination);
        to.name = name ? row->bytes(name->field) : std::string_view();
        return to;
    }
    for (const Slot* slot : row->entity().fields())
        if (slot->kind == SlotKind::attribute && !row->isAbsent(slot->field)) {
            FieldValue value = row->value(slot->field);
            to.held.push_back(std::make_unique<std::string>(value.bytes));
            value.bytes = *to.held.back();
            to.fields.emplace_back(slot->key, value);
        }
    return to;
}

} // namespace objectstore
