// mensura design

#include "tool.h"

namespace {

TEST_F(Tool, design_names_every_clamped_value_and_unusable_designs) {
    EXPECT_EQ(run("design lowpass --cutoff 40Hz --rate 360Hz --poles 25 --ripple 3dB"), 0);
    EXPECT_NE(err.find("--poles 25 is outside the range of butterworth: 20 is taken"), std::string::npos) << err;
    EXPECT_NE(err.find("--ripple 3 is outside the range of butterworth: 1 is taken"), std::string::npos) << err;
}

}  // namespace
