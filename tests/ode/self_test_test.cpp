// The run that anyone can repeat, and the sample data.
#include <gtest/gtest.h>
#include <mensura/ode.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/folder.h"

TEST(test_rkf45, writes_a_file_in_the_current_directory) {
    const support::Folder folder;
    std::filesystem::create_directory("test_rkf45.txt");  // which cannot be opened as a file
    testing::internal::CaptureStdout();
    test_rkf45();
    std::filesystem::remove("test_rkf45.txt");
    test_rkf45();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "test_rkf45 end\n");
    std::vector<std::string> lines(1);
    for (std::ifstream file("test_rkf45.txt"); std::getline(file, lines.back());) lines.emplace_back();
    ASSERT_EQ(lines.size(), 15002);
    EXPECT_EQ(lines[0], "1.000000,1.000000,3.000000,0");
    EXPECT_EQ(lines[15000], "3.188614,-1.329579,2.079591,0");  // mpmath 1.2.1: odefun(f, 0, [1, 1, 3])(15)
    const double sample[] = {12, -51, 4, 6, 167, -68, -4, 24, -41, -1, 1, 0, 2, 0, 3};
    EXPECT_TRUE(std::equal(std::begin(sample), std::end(sample), in[0]));
}
