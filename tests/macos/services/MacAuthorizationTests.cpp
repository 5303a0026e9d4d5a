// What is asked of Authorization Services, which are pretended here.
#include "platform/macos/services/rights/MacAuthorization.h"

#include <Security/Authorization.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Pretended {
    OSStatus answer = errAuthorizationSuccess;
    std::vector<std::string> calls;
    std::string environment;     // name=value, each
    std::size_t outputLeft = 0;  // bytes that the tool still writes
    bool closed = false;         // the stream from the tool
};
Pretended pretended;

std::string textOf(const AuthorizationItemSet* set) {
    std::string text;
    for (UInt32 index = 0; set != nullptr && index < set->count; ++index) {
        const AuthorizationItem& item = set->items[index];
        const std::string value(static_cast<const char*>(item.value), item.value == nullptr ? 0 : item.valueLength);
        text += std::string(item.name) + "=" + value + ";";
    }
    return text;
}

ssize_t readOutput(void* /*cookie*/, char* buffer, std::size_t size) {
    const std::size_t bytes = std::min(size, pretended.outputLeft);
    std::fill_n(buffer, bytes, '\xff');
    pretended.outputLeft -= bytes;
    return static_cast<ssize_t>(bytes);
}

int closeOutput(void* /*cookie*/) {
    pretended.closed = true;
    return 0;
}

AuthorizationRef someRef() {
    static const char storage = 0;
    return reinterpret_cast<AuthorizationRef>(&storage);
}

class AuthorizationServices : public testing::Test {
protected:
    AuthorizationServices() { pretended = {}; }

    std::unique_ptr<platform::AuthorizationRef> created() {
        std::unique_ptr<platform::AuthorizationRef> ref;
        EXPECT_EQ(m_authorization.create(std::nullopt, ref), 0);
        pretended.calls.clear();
        return ref;
    }

    platform::macos::MacAuthorization m_authorization;
    const platform::Credentials m_ada{.user = "ada", .password = "pass word"};
};

}  // namespace

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* made) {
    pretended.calls.push_back("create " + textOf(rights) + std::to_string(flags));
    pretended.environment = textOf(environment);
    *made = pretended.answer == errAuthorizationSuccess ? someRef() : nullptr;
    return pretended.answer;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags) {
    pretended.calls.push_back("free " + std::to_string(flags));
    return authorization == someRef() ? errAuthorizationSuccess : errAuthorizationInvalidSet;
}

OSStatus AuthorizationCopyRights(AuthorizationRef /*authorization*/, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights) {
    pretended.calls.push_back("rights " + textOf(rights) + std::to_string(flags) +
                              (authorizedRights == nullptr ? "" : " back"));
    pretended.environment = textOf(environment);
    return pretended.answer;
}

OSStatus AuthorizationCopyPrivilegedReference(AuthorizationRef* authorization, AuthorizationFlags flags) {
    pretended.calls.push_back("inherited " + std::to_string(flags));
    *authorization = pretended.answer == errAuthorizationSuccess ? someRef() : nullptr;
    return pretended.answer;
}

// Found by its name only, as in the system.
__attribute__((visibility("default"))) OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization,
                                                                                   const char* tool,
                                                                                   AuthorizationFlags flags,
                                                                                   char* const* arguments,
                                                                                   std::FILE** pipe) {
    std::string call = std::string("execute ") + tool + " " + std::to_string(flags);
    for (; *arguments != nullptr; ++arguments) {
        call += std::string(" '") + *arguments + "'";
    }
    pretended.calls.push_back(call + (pipe == nullptr ? "" : " with a stream"));
    if (pretended.answer == errAuthorizationSuccess && pipe != nullptr) {
        *pipe =
            ::fopencookie(nullptr, "r", {.read = readOutput, .write = nullptr, .seek = nullptr, .close = closeOutput});
    }
    return authorization == someRef() ? pretended.answer : errAuthorizationInvalidSet;
}

}  // extern "C"

namespace {

using Calls = std::vector<std::string>;
using Interaction = platform::Authorization::Interaction;

TEST_F(AuthorizationServices, MakeAnAuthorizationWithoutRightsAndFreeItWithoutDestroyingThem) {
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(std::nullopt, ref), 0);
    ref.reset();
    EXPECT_EQ(pretended.calls, (Calls{"create 0", "free 0"}));
}

TEST_F(AuthorizationServices, GetTheNameAndThePasswordWithoutTheirEnds) {
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(m_ada, ref), 0);
    EXPECT_EQ(pretended.environment, "username=ada;password=pass word;");
}

TEST_F(AuthorizationServices, MayAskTheUserOnlyWhenThatIsAllowed) {
    const auto ref = created();
    EXPECT_EQ(m_authorization.copyRights(*ref, "system.privilege.admin", {}, Interaction::allowed), 0);
    EXPECT_EQ(m_authorization.copyRights(*ref, "system.privilege.admin", m_ada, Interaction::forbidden), 0);
    EXPECT_EQ(pretended.calls, (Calls{"rights system.privilege.admin=;19", "rights system.privilege.admin=;18"}));
}

TEST_F(AuthorizationServices, RefuseNothingSilently) {
    pretended.answer = -60005;
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(std::nullopt, ref), -60005);
    EXPECT_EQ(ref, nullptr);
    EXPECT_EQ(m_authorization.copyPrivilegedReference(), nullptr);
}

TEST_F(AuthorizationServices, AreNotGivenTextsThatWouldBeCutShort) {
    const auto ref = created();
    const std::string cut("a\0b", 3);
    EXPECT_EQ(m_authorization.execute(*ref, "/bin/rm", {cut}, false), errAuthorizationInvalidSet);
    EXPECT_EQ(m_authorization.copyRights(*ref, "r", platform::Credentials{cut, "p"}, Interaction::allowed),
              errAuthorizationInvalidSet);
    EXPECT_EQ(pretended.calls, Calls{});
}

TEST_F(AuthorizationServices, StartAToolWithItsArgumentsInOrder) {
    const auto ref = created();
    EXPECT_EQ(m_authorization.execute(*ref, "/bin/mv", {"-f", "a b", ""}, false), 0);
    EXPECT_EQ(pretended.calls, Calls{"execute /bin/mv 0 '-f' 'a b' ''"});
}

TEST_F(AuthorizationServices, AreReadFromToTheEndOfAToolThatIsWaitedFor) {
    const auto ref = created();
    pretended.outputLeft = 100'000;
    EXPECT_EQ(m_authorization.execute(*ref, "/usr/bin/touch", {}, true), 0);
    EXPECT_EQ(pretended.calls, Calls{"execute /usr/bin/touch 0 with a stream"});
    EXPECT_EQ(pretended.outputLeft, 0U);
    EXPECT_TRUE(pretended.closed);
}

TEST_F(AuthorizationServices, PassOnWhatTheStartedProgramInherits) {
    EXPECT_NE(m_authorization.copyPrivilegedReference(), nullptr);
    EXPECT_EQ(pretended.calls, (Calls{"inherited 0", "free 0"}));
}

}  // namespace
