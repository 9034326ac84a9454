// Pages under docs/ that tests compare with what the code says.
#pragma once

#include "support/TextCases.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace test {

inline std::string pagePath(const std::string& name)
{
    return std::string(ROSTER_SOURCE_DIR) + "/docs/" + name;
}

/// The page is `wanted`; with ROSTER_UPDATE_PAGES set it becomes so.
inline void expectPage(const std::string& path, const std::string& wanted)
{
    if (std::getenv("ROSTER_UPDATE_PAGES"))
        std::ofstream(path, std::ios::binary) << wanted;
    else
        EXPECT_EQ(contentsOf(path), wanted)
            << path << ": ROSTER_UPDATE_PAGES=1 in this test's environment writes it anew";
}

/// The same for the part of a page behind a line that says where it comes from.
inline void expectPageBehind(const std::string& path, const std::string& line, const std::string& wanted)
{
    const std::string now = contentsOf(path);
    const auto start = now.find(line);
    ASSERT_NE(start, std::string::npos) << path << " has lost the line " << line;
    expectPage(path, now.substr(0, start) + line + wanted);
}

} // namespace test
