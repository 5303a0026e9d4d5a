// Standard output and standard error: what goes there, and how it looks on a terminal.
//
// Colour only on a terminal that has it, and not when the environment has NO_COLOR with a value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace commandline {

// Before anything is opened: which streams the program was started without. Output that is lost counts as a failure.
// The program's name, which is kept, stands in front of every error.
void noteStreams(const char* program);

bool isErrorTerminal();
std::size_t errorTerminalWidth();  // columns; 80 when it does not say

std::size_t outputTerminalWidth();  // columns; 80 when it does not say; 0 when it is no terminal
std::string boldForOutput(std::string_view text);
enum class Tint { red, yellow };
std::string tintedForOutput(std::string_view text, Tint tint);  // and bold
std::string outputSwatch(int red, int green, int blue);         // a block of that colour and a blank; "" without colour

void print(std::string_view text);
// A file's name as it is, on a terminal without what could act on it.
std::string nameForOutput(const std::string& name);

// One line to standard error, behind the program's name; it may hold names of any kind.
void printError(const std::string& message);
void printErrorAsItIs(std::string_view text);  // for what moves the cursor

// Whether all that was printed has arrived; says so if not, unless the reader has simply gone.
bool finishOutput();

}  // namespace commandline
