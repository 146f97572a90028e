// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/Effects.h"

/// The UEI library as a test scripts it, linked in the library's place. Each call is noted as
/// "qsp <function without QSP_> <arguments>", handles and functions left out. One at a time; while
/// there is none, every function of the library returns 1.
///
/// Everything is named by the function that it answers, without "QSP_".
class ScriptedQsp {
public:
    explicit ScriptedQsp(Effects& effects);
    ~ScriptedQsp();
    ScriptedQsp(const ScriptedQsp&) = delete;
    ScriptedQsp& operator=(const ScriptedQsp&) = delete;

    /// A function that is not here returns 0; with another result it gives out nothing.
    std::map<std::string, int, std::less<>> results;

    /// By name of the code set. One that is not here gives 44; else the result is the callback's.
    std::map<std::string, std::string, std::less<>> binaries;

    /// What a total counts, and what the functions that go by an index give out; an index outside
    /// gives 45. "get_brand_name" also stands for "retrieve_brands_total", and likewise the others.
    std::map<std::string, std::vector<std::string>, std::less<>> lists;

    /// Stands for a null pointer among the texts.
    static constexpr const char* kNull = "(null)";
    /// Texts and numbers that other functions give out: "" and 0 where there are none.
    std::map<std::string, std::string, std::less<>> texts;
    /// One for each call, the last one again and again.
    std::map<std::string, std::vector<std::int32_t>, std::less<>> numbers;
    /// The same of texts, where more than one is wanted.
    std::map<std::string, std::vector<std::string>, std::less<>> textLists;

    /// What the service gave to the library.
    int (*post)(const char*, std::uint32_t, char**, std::uint32_t*, const char*) = nullptr;
    int (*deliver)(const char*, const std::uint8_t*, std::uint32_t) = nullptr;

    /// For the functions of the library.
    static ScriptedQsp* Current() { return s_current; }
    int Called(std::string_view function, std::string_view arguments);
    std::int32_t NextNumber(std::string_view function);
    const char* Text(std::string_view function);

private:
    static inline ScriptedQsp* s_current = nullptr;
    std::string m_text;
    Effects& m_effects;
};
