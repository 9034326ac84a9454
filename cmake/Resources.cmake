# The files under resources/ become bytes in the library, so that it works from any place. The assembler takes
# them in whole, which costs nothing at compile time however large they are.

# roster_embed_resources(RESULT): writes a source file that holds them, with a table by their paths.
function(roster_embed_resources result)
    set(folder ${PROJECT_SOURCE_DIR}/resources)
    file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${folder} ${folder}/*)
    list(FILTER files EXCLUDE REGEX "(^|/)(\\.|README)")
    set(number 0)
    set(data)
    set(symbols)
    set(table)
    set(depends)
    foreach(file ${files})
        set(symbol roster_resource_${number})
        string(APPEND data
            "${symbol}:\n    .incbin \"${folder}/${file}\"\n${symbol}_end:\n    .byte 0\n")
        string(APPEND symbols "HIDDEN extern const char ${symbol}[];\nHIDDEN extern const char ${symbol}_end[];\n")
        string(APPEND table "        entry(\"${file}\", ${symbol}, ${symbol}_end),\n")
        list(APPEND depends ${folder}/${file})
        math(EXPR number "${number} + 1")
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/EmbeddedResources.cpp)
    file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [=[
// Made by cmake/Resources.cmake.
#include "platform/files/EmbeddedResources.h"

#include "platform/run/NeverDestroyed.h"

asm(R"(
    .pushsection .rodata
@data@    .popsection
)");

#define HIDDEN __attribute__((visibility("hidden")))
extern "C" {
@symbols@}

const std::vector<platform::EmbeddedResource>& platform::embeddedResources()
{
    const auto entry = [](std::string_view name, const char* from, const char* to) {
        return EmbeddedResource{name, {from, static_cast<std::size_t>(to - from)}};
    };
    static const NeverDestroyed<std::vector<EmbeddedResource>> table(std::initializer_list<EmbeddedResource>{
@table@    });
    return *table;
}
]=])
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS "${depends}")
    set(${result} ${source} PARENT_SCOPE)
endfunction()
