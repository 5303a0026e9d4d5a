// For whom an installation is planned.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/ports/Host.h"

namespace wickfield_bundle {

// Takes the account's rights for good, all threads included, and its home folder. For the superuser only, who may
// name himself; anybody else may name only himself. Why not, if it fails; then the program should end.
std::optional<std::string> becomeUser(const std::string& name);

// Stands in for the present identity and folders: an ordinary user with that home folder. The desktop's own settings of
// where folders lie count where they lie in that home.
class Customer {
public:
    explicit Customer(const std::string& home);
    ~Customer();
    Customer(const Customer&) = delete;
    Customer& operator=(const Customer&) = delete;

    // The present host with them. They are used for as long as this object lives.
    platform::Host host() const;

private:
    struct Services;
    std::unique_ptr<Services> m_services;
};

}  // namespace wickfield_bundle
