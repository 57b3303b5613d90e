// The figures of reports: what belongs to modules adds up however little a report lists, and what
// it lists is what stands out.
#include "export/report_figures.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <numeric>
#include <string>

#include "activity/profile/profile_run.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

/// Sixty modules in rows of three levels with signals of which some toggle, one is x, one glitches.
std::string Design() {
  std::string head = "$timescale 1ns $end $version </script>\xff $end $scope module top $end\n";
  std::string body;
  for (int module = 0; module < 60; ++module) {
    if (module % 3 == 0 && module > 0) head += "$upscope $end $upscope $end $upscope $end\n";
    head += "$scope module m" + std::to_string(module) + " $end\n";
    for (int signal = 0; signal < 5; ++signal) {
      const std::string code = "s" + std::to_string(module * 5 + signal);
      head += "$var wire 4 " + code + " q" + std::to_string(signal) + " [3:0] $end\n";
      for (int time = 0; time <= 30; ++time) {
        if (signal == 0 || time % (module + signal) == 0) {
          body += "#" + std::to_string(time) + " b" +
                  (signal == 1 && time < 9 ? "x"
                   : time % 2              ? "101"
                                           : "0") +
                  " " + code + "\n";
        }
      }
    }
  }
  // The body module by module: time may not go back, so it is sorted by the reader of this test.
  std::string sorted;
  for (int time = 0; time <= 30; ++time) {
    const std::string stamp = "#" + std::to_string(time) + " ";
    sorted += "#" + std::to_string(time) + "\n";
    for (std::size_t at = body.find(stamp); at != std::string::npos;
         at = body.find(stamp, at + 1)) {
      sorted += body.substr(at + stamp.size(), body.find('\n', at) - at - stamp.size()) + "\n";
    }
  }
  return head + "$upscope $end $upscope $end $upscope $end $upscope $end $enddefinitions $end\n" +
         sorted;
}

std::uint64_t Sum(const nlohmann::json& list) {
  return std::accumulate(list.begin(), list.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const nlohmann::json& value) {
                           return sum +
                                  (value.is_array() ? Sum(value) : value.get<std::uint64_t>());
                         });
}

TEST(ReportFigures, AddUpHoweverMuchIsLeftOut) {
  TextSource dump(Design());
  ProfileOptions options;
  options.counting.dump = "d";
  options.depth = UINT32_MAX;
  options.parts = 10;
  const ProfileRun<Profile> run = CountActivityAndProfile(dump, options);
  ReportFacts facts;
  facts.dump = "d";
  for (const auto& [modules, courses, signals, levels] :
       {std::array<std::size_t, 4>{1000, 1000, 1000, 1000},
        {20, 7, 40, 1000},
        {1000, 3, 10, 2},
        {1, 1, 0, 5}}) {
    ReportLimits limits;
    limits.modules = modules;
    limits.courses = courses;
    limits.signals = signals;
    limits.levels = static_cast<std::uint32_t>(levels);
    const std::string text = ReportJson(run.base, run.figures, facts, limits);
    EXPECT_EQ(text.find('<'), std::string::npos);
    const nlohmann::json json = nlohmann::json::parse(text);
    EXPECT_EQ(json["dump"]["simulator"], "</script>\xef\xbf\xbd");
    const auto& listed = json["modules"];
    EXPECT_LE(listed["name"].size(), modules);
    EXPECT_LE(json["activity"]["module"].size(), courses);
    EXPECT_LE(json["signals"]["name"].size(), signals);
    const std::uint64_t toggles = listed["toggles"][0];
    EXPECT_GT(toggles, 0U);
    EXPECT_EQ(Sum(listed["own_toggles"]), toggles);
    EXPECT_EQ(Sum(listed["own_bits"]), listed["bits"][0]);
    EXPECT_EQ(Sum(json["activity"]["toggles"]), toggles);
    EXPECT_EQ(Sum(listed["signals"]), json["counts"]["signals"]);
    EXPECT_EQ(json["signals"]["name"].size() + Sum(json["rest"]["signals"]),
              json["counts"]["signals"]);
    EXPECT_EQ(Sum(json["signals"]["toggles"]) + Sum(json["rest"]["toggles"]), toggles);
    EXPECT_EQ(listed["name"].size() - 1 + Sum(json["hidden"]["modules"]),
              json["counts"]["modules"]);
  }
}

TEST(ReportFigures, ShrinkUntilTheyFit) {
  TextSource dump(Design());
  ProfileOptions options;
  options.counting.dump = "d";
  options.depth = UINT32_MAX;
  options.parts = 2;
  const ProfileRun<Profile> run = CountActivityAndProfile(dump, options);
  ReportLimits limits;
  limits.modules = 128;
  limits.signals = 512;
  limits.bytes = 8000;
  EXPECT_LE(ReportJson(run.base, run.figures, {}, limits).size(), limits.bytes);
}

}  // namespace
}  // namespace orsa::kesncd
