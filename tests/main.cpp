#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    const int result = RUN_ALL_TESTS();
    // A filter that names no test must not pass.
    return testing::UnitTest::GetInstance()->test_to_run_count() == 0 ? 1 : result;
}
