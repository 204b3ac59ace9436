// What every target has: its input as a text, its output silenced, its checks.
#pragma once

#include <cstdint>
#include <string>

// The target: one input.
void try_input(const std::string &input);

// Ends the run with this input when it does not hold.
void require(bool holds);

// Makes the file, with its folder.
void put(const std::string &path, const std::string &text);
