#pragma once

#include <kestra/platform/Characters.h>

#include <string>

/// Notes one expectation; a failed one is printed. The program's exit status tells whether all
/// held.
void Note(bool holds, const char* expression, const char* file, int line);

#define CHECK(...) Note((__VA_ARGS__), #__VA_ARGS__, __FILE__, __LINE__)

/// An ASCII text in the string type of a flavour.
template <typename S>
S Text(const std::string& ascii) {
    return S(ascii.begin(), ascii.end());
}

/// `S` of each flavour leads to its character type.
template <typename S>
using CharacterOf = typename S::value_type;

// One per source file; the name says which classes it uses.
void UsePlatform();
void UseRecognizers();
void UseRecords();
void UseRewriter();
void UseDocuments();
void UseEvents();
void UseDetection();
void UseBoundary();

extern "C" int CheckInterface(void);  ///< @return how much is wrong
