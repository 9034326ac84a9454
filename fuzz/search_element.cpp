// Any bytes as an archived search: refused with a reason, or a search that is archived to the same again and
// can be asked.
#include "Target.h"
#include "platform/value/KeyedArchive.h"
#include "search/ZRSearchElement.h"
#include "store/ZRRoster.h"

namespace {

using fuzz::require;

void checkSearch(const ZRSearchElement& element) ZR_NTS
{
    element.description();
    element.searchRecordClasses();
    element._withinDate();
    const auto archive = element.archivedData();
    if (!archive) {
        require(archive.error().code == static_cast<long>(platform::KeyedArchiveFault::tooLarge),
            "a search that was read cannot be archived", archive.error().text);
        return;
    }
    const auto again = ZRSearchElement::nts_unarchivedElement(*archive);
    require(bool(again), "what was archived cannot be read", again ? "" : again.error().text);
    require((*again)->isEqual(element), "archived and read, not the same");
}

void readArchive(std::string_view bytes)
{
    const ZRGlobalLockScope lock;
    try {
        const auto element = ZRSearchElement::nts_unarchivedElement(bytes);
        if (element)
            checkSearch(**element);
        else
            require(!element.error().text.empty(), "refused without a reason");
    } catch (const ZRIncompatibleSearchElementVersionException&) {
        // As it is told: the archive is newer.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    // For the shared roster, in which groups of archives are looked for.
    static const fuzz::Home home;
    ZRRoster::setShouldCreateEmptyDatabase(true);
    readArchive(std::string_view(reinterpret_cast<const char*>(bytes), size));
    return 0;
}
