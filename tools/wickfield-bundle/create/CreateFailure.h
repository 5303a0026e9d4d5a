// What ends the making of a bundle before there is one.
#pragma once

#include <stdexcept>
#include <string>

#include "platform/ports/Error.h"

namespace wickfield_bundle {

// The text is for the maker: what could not be done, why, and what to do about it.
class CreateFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    explicit CreateFailure(const platform::Error& error) : std::runtime_error(error.description) {}
};

// What is wanted makes no sense, whatever lies on the disk.
class SenselessProject : public CreateFailure {
public:
    using CreateFailure::CreateFailure;
};

// A signal asked the program to end.
class CreateInterrupted : public CreateFailure {
public:
    CreateInterrupted() : CreateFailure("interrupted") {}
};

void throwWhenInterrupted();

}  // namespace wickfield_bundle
