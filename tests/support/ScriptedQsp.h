// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/Effects.h"

/// A scripted UEI library, linked in the library's place. Each call is recorded as "qsp <function
/// without QSP_> <arguments>", without handles and functions. One object at a time; without one,
/// every function of the library returns 1.
///
/// All values are named by the function that returns them, without "QSP_".
class ScriptedQsp {
public:
    explicit ScriptedQsp(Effects& effects);
    ~ScriptedQsp();
    ScriptedQsp(const ScriptedQsp&) = delete;
    ScriptedQsp& operator=(const ScriptedQsp&) = delete;

    /// A function without an entry returns 0. With another result it has no output.
    std::map<std::string, int, std::less<>> results;

    /// By name of the code set. A name without an entry gives 44; else the result is the
    /// callback's.
    std::map<std::string, std::string, std::less<>> binaries;

    /// The rows of functions with an index, whose number is the total; another index gives 45. The
    /// list of "get_brand_name" also serves "retrieve_brands_total", and likewise the others.
    std::map<std::string, std::vector<std::string>, std::less<>> lists;

    /// Stands for a null pointer among the texts and in the lists.
    static constexpr const char* kNull = "(null)";
    /// Texts and numbers that other functions return; "" and 0 if there is no entry.
    std::map<std::string, std::string, std::less<>> texts;
    /// One for each call; the last one repeats.
    std::map<std::string, std::vector<std::int32_t>, std::less<>> numbers;
    /// The same for texts, for functions that need more than one.
    std::map<std::string, std::vector<std::string>, std::less<>> textLists;

    /// The callbacks that the service has passed to the library.
    int (*post)(const char*, std::uint32_t, char**, std::uint32_t*, const char*) = nullptr;
    int (*deliver)(const char*, const std::uint8_t*, std::uint32_t) = nullptr;

    /// Used by the functions of the library.
    static ScriptedQsp* Current() { return s_current; }
    int Called(std::string_view function, std::string_view arguments);
    std::int32_t NextNumber(std::string_view function);
    const char* Text(std::string_view function);

private:
    static inline ScriptedQsp* s_current = nullptr;
    std::string m_text;
    Effects& m_effects;
};
