#include "qzhost/parameters.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace {

class ParametersTest : public testing::Test {
  protected:
    void SetUp() override { host_parameters_reset(); }
    void TearDown() override { host_parameters_reset(); }
};

std::string contents(const char* path) {
    std::ifstream file(std::string(QZBIFUN_SOURCE_DIR) + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::map<uint32_t, std::string> parameters_of_the_header() {
    const std::string header = contents("/include/qzbifun/codes.h");
    const std::string source = header.substr(header.find("LOB_SEARCH_READ_KB"));
    const std::regex definition(R"(([A-Z0-9_]+) = (\d+),?)");
    std::map<uint32_t, std::string> parameters;
    for (std::sregex_iterator it(source.begin(), source.end(), definition), end; it != end; ++it) {
        parameters[static_cast<uint32_t>(std::stoul((*it)[2]))] = (*it)[1];
    }
    return parameters;
}

TEST_F(ParametersTest, DefaultsAreThoseOfTheDocumentation) {
    const std::string page = contents("/docs/host.md");
    const std::regex row(R"(\| (\d+) \| `([A-Z0-9_]+)` \| (\d+) \|)");
    std::map<uint32_t, std::string> documented;
    for (std::sregex_iterator it(page.begin(), page.end(), row), end; it != end; ++it) {
        const uint32_t number = static_cast<uint32_t>(std::stoul((*it)[1]));
        documented[number] = (*it)[2];
        EXPECT_EQ(ini_get_value(0, number), std::stoul((*it)[3])) << (*it)[2];
    }
    EXPECT_EQ(documented.size(), 11u);
    EXPECT_EQ(documented, parameters_of_the_header());
    EXPECT_EQ(ini_get_value(0, SERVER_CHARSET), 1u);
}

TEST_F(ParametersTest, EachParameterKeepsItsOwnValue) {
    const auto parameters = parameters_of_the_header();
    ASSERT_EQ(parameters.size(), 11u);
    for (const auto& [number, name] : parameters) host_parameter_set(number, number * 1000 + 7);
    for (const auto& [number, name] : parameters) EXPECT_EQ(ini_get_value(0, number), number * 1000 + 7) << name;
    host_parameter_set(JSON_MODE, UINT32_MAX);
    EXPECT_EQ(ini_get_value(0, JSON_MODE), UINT32_MAX);
    host_parameters_reset();
    EXPECT_EQ(ini_get_value(0, JSON_MODE), 0u);
    EXPECT_EQ(ini_get_value(0, SERVER_CHARSET), 1u);
}

TEST_F(ParametersTest, NumbersThatNoParameterBearsAreIgnored) {
    const auto parameters = parameters_of_the_header();
    for (uint32_t number = 0; number < 1000; ++number) {
        if (!parameters.contains(number)) host_parameter_set(number, 5);
    }
    host_parameter_set(UINT32_MAX, 5);
    host_parameter_set(UINT32_MAX - 500, 5);
    for (uint32_t number = 0; number < 1000; ++number) {
        if (!parameters.contains(number)) {
            EXPECT_EQ(ini_get_value(0, number), 0u) << number;
        }
    }
    EXPECT_EQ(ini_get_value(0, UINT32_MAX), 0u);
    EXPECT_EQ(ini_get_value(0, SERVER_CHARSET), 1u);
}

TEST_F(ParametersTest, TheDateFormatOption) {
    EXPECT_EQ(ini_enable_oracle_date_fmt(), 0);
    host_set_oracle_date_format(5);
    EXPECT_NE(ini_enable_oracle_date_fmt(), 0);
    host_set_oracle_date_format(0);
    EXPECT_EQ(ini_enable_oracle_date_fmt(), 0);
    host_set_oracle_date_format(1);
    host_parameters_reset();
    EXPECT_EQ(ini_enable_oracle_date_fmt(), 0);
}

}  // namespace
