#include "platform/ports/Host.h"

namespace platform {

namespace {
Host current;
}  // namespace

void setHost(const Host& host) { current = host; }

const Host& host() { return current; }

ScopedHost::ScopedHost(const Host& replacement) : m_previous(current) { current = replacement; }

ScopedHost::~ScopedHost() { current = m_previous; }

}  // namespace platform
