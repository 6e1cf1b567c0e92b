#include "outlets/files/internal/record_output.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "outlets/files/record_file.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

Math::MetricalData exampleRecord() {
  Math::MetricalData record;
  record.sensorName = "Sonar \"A\", front";
  record.familyName = "Sonar";
  record.fieldOfView = Math::SensorFieldOfView2D(0.1f, 2.5f, 1.05f, 5);
  record.points = {Math::Position3D(0.3f, NAN, 0.5f), Math::Position3D(2.5f, 0.0f, 0.5f)};
  record.timestamp = ko::Clock::time_point(ko::Duration(1'234'567'890'123'456'789));
  return record;
}

std::string written(const std::vector<Math::MetricalData>& records, Format format) {
  std::ostringstream out;
  session::Snapshot snapshot;
  snapshot.sensors.emplace_back().records = records;
  RecordWriter sut(out, format);
  sut.write(snapshot);
  sut.finish();
  return out.str();
}

TEST(RecordOutput, jsonHasEveryFieldByNameAndTheShortestExactFloats) {
  const std::string expected =
      R"({"sensorName":"Sonar \"A\", front","familyName":"Sonar",)"
      R"("fieldOfView":{"minRange":0.1,"maxRange":2.5,"angularRange":1.05,"rayCount":5},)"
      R"("sensorTransform":[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0],)"
      R"("points":[{"x":0.3,"y":null,"z":0.5},{"x":2.5,"y":0.0,"z":0.5}],)"
      R"("timestamp":1234567890123456789,"frame":"map"})";
  EXPECT_EQ(written({exampleRecord()}, Format::jsonl), expected + "\n");
  EXPECT_EQ(written({exampleRecord(), exampleRecord()}, Format::json),
            "[\n" + expected + ",\n" + expected + "\n]\n");
  EXPECT_EQ(written({}, Format::json), "[]\n");
}

TEST(RecordOutput, csvHasALinePerPointAndOneForARecordWithoutPoints) {
  auto empty = exampleRecord();
  empty.points.clear();
  std::istringstream lines(written({exampleRecord(), empty}, Format::csv));
  std::vector<std::string> read;
  for (std::string line; std::getline(lines, line);) read.push_back(line);
  ASSERT_EQ(read.size(), 4u);
  EXPECT_THAT(read[1], testing::StartsWith(R"("Sonar ""A"", front","Sonar",map,0.1,2.5,1.05,5,)"));
  EXPECT_THAT(read[2], testing::EndsWith(",1,2.5,0,0.5"));
  EXPECT_THAT(read[3], testing::EndsWith(",,,,"));
  const auto commas = [](const std::string& line) {
    return std::count(line.begin(), line.end(), ',');
  };
  // The sensor's name has one more comma.
  EXPECT_EQ(commas(read[0]) + 1, commas(read[2]));
}

TEST(RecordFile, theFileNameDecidesTheFormat) {
  const test::TemporaryFolder folder;
  session::Snapshot snapshot;
  snapshot.pose = {1.0f, 2.0f, 0.1f};
  snapshot.frame = session::Frame::robot;
  snapshot.sensors.emplace_back().records = {exampleRecord()};
  const auto contentOf = [&](const std::string& name) {
    RecordFile sut(folder / name);
    sut.show(snapshot);
    sut.show(snapshot);
    sut.finish();
    return test::readBytes(folder / name);
  };
  const std::string lines = contentOf("records.jsonl");
  EXPECT_THAT(lines,
              testing::EndsWith(R"("frame":"robot","robotPose":{"x":1.0,"y":2.0,"theta":0.1}})"
                                "\n"));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2);
  const std::string table = contentOf("records.csv");
  EXPECT_THAT(table, testing::StartsWith("sensorName,"));
  EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 5) << "the titles once";
  EXPECT_EQ(errorOf([&] { RecordFile(folder / "none/a.csv"); }),
            (folder / "none/a.csv") + ": can't be written: No such file or directory");
}

TEST(RecordOutput, aTableShowsTheNearestRangeOrTheReasonForNone) {
  session::Snapshot snapshot;
  auto& sensor = snapshot.sensors.emplace_back();
  sensor.records = {exampleRecord()};
  sensor.nearest = 1.5f;
  std::ostringstream out;
  RecordWriter sut(out, Format::table);
  sut.write(snapshot);
  sut.addSilent({"Laser", "Laser", "it is off"});
  sut.finish();
  EXPECT_THAT(out.str(), testing::ContainsRegex("Sonar +2 +1.500 +0.1..2.5 "));
  EXPECT_THAT(out.str(), testing::ContainsRegex("Laser +Laser +- .* it is off\n"));
}

}  // namespace
}  // namespace QV::outlets
