#include "lib/KZException.h"

#include "tests/lib/LogFixture.h"

namespace {

using testing::ElementsAre;

class CaughtExceptions : public LogFixture {
protected:
    CaughtExceptions() { KZLog::createNewLog("Test"); }
};

TEST_F(CaughtExceptions, AreLoggedPrintedAndReturnedAsOneMessage) {
    const std::string message = "Exception in copyFile. NSRangeException - out of bounds.";
    EXPECT_EQ(printed([&] {
                  EXPECT_EQ(KZException::logException({"NSRangeException", "out of bounds"}, "copyFile"), message);
              }),
              message + "\n");
    EXPECT_THAT(entries(), ElementsAre(message));
}

TEST_F(CaughtExceptions, SurviveReasonsThatLookLikeFormats) {
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(KZException::logException({"N", "%n %@ %s 100%"}, "m"), "Exception in m. N - %n %@ %s 100%.");
    EXPECT_THAT(entries(), ElementsAre("Exception in m. N - %n %@ %s 100%."));
}

TEST_F(CaughtExceptions, MayComeFromAMethodWithoutAName) {
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(KZException::logException({"N", "r"}, nullptr), "Exception in (null). N - r.");
}

TEST(TimedOutExceptions, AreKnownByTheirNameAlone) {
    EXPECT_TRUE(KZException::didTimeout({"NSPortTimeoutException", ""}));
    for (const char* const name : {"", "NSPortTimeoutException ", "nsporttimeoutexception", "NSTimeoutException"}) {
        EXPECT_FALSE(KZException::didTimeout({name, "NSPortTimeoutException"})) << name;
    }
}

}  // namespace
