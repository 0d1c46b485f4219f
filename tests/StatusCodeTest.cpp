#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

namespace Zantor {
namespace {

TEST(StatusCodeTest, Placeholder)
{
    EXPECT_EQ(StatusCodeToString(STATUS_CODE_SUCCESS), "success");
}

} // namespace
} // namespace Zantor
