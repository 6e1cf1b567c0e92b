#include "robot/maps/map_files.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <opencv2/imgcodecs.hpp>
#include <rapidcheck/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

using testing::EndsWith;
using testing::FloatEq;

/** A map's YAML, one key a line, in the order of the lines that error texts name. */
struct Yaml {
  std::string image = "map.pgm";
  std::string resolution = "0.05";
  std::string origin = "[0, 0, 0]";
  std::string negate = "0";
  std::string occupied = "0.65";
  std::string free = "0.196";
  std::string more = "";

  std::string text() const {
    return "image: " + image + "\nresolution: " + resolution + "\norigin: " + origin +
           "\nnegate: " + negate + "\noccupied_thresh: " + occupied + "\nfree_thresh: " + free +
           "\n" + more;
  }
};

struct MapFilesTest : testing::Test {
  OccupancyMap load(const Yaml& yaml) { return loadMap(folder.write("map.yaml", yaml.text())); }

  /** The occupancies of a P2 image of one row. */
  std::vector<float> loadRow(const Yaml& yaml, const std::string& pixels, int count) {
    folder.write("map.pgm", "P2 " + std::to_string(count) + " 1 255 " + pixels);
    return load(yaml).getCells();
  }

  test::TemporaryFolder folder;
};

TEST_F(MapFilesTest, thresholdsTurnShadesIntoOccupancies) {
  EXPECT_THAT(loadRow({}, "254 255 206 205 100 89 0", 7),
              ElementsAre(0.0f, 0.0f, 0.0f, 0.5f, 0.5f, 1.0f, 1.0f));
  EXPECT_THAT(loadRow({.negate = "true"}, "0 49 50 255", 4), ElementsAre(0.0f, 0.0f, 0.5f, 1.0f));
  // 51 of 255 is exactly a fifth: a threshold itself is neither above nor below.
  EXPECT_THAT(loadRow({.occupied = "0.2", .free = "0.2"}, "205 204 203", 3),
              ElementsAre(0.0f, 0.5f, 1.0f));
}

TEST_F(MapFilesTest, scaleSpreadsTheShadesBetweenTheThresholds) {
  const Yaml yaml{.occupied = "0.8", .free = "0.2", .more = "mode: scale\n"};
  EXPECT_THAT(
      loadRow(yaml, "255 204 153 102 51 0", 6),
      ElementsAre(0.0f, FloatEq(0.0f), FloatEq(1.0f / 3), FloatEq(2.0f / 3), FloatEq(1.0f), 1.0f));
  const Yaml wide{.negate = "1", .occupied = "1.0", .free = "0", .more = yaml.more};
  EXPECT_THAT(loadRow(wide, "0 51 255", 3), ElementsAre(0.0f, FloatEq(0.2f), 1.0f));
}

TEST_F(MapFilesTest, rawPixelsAreOccupanciesInPercent) {
  Yaml yaml{.more = "mode: \"raw\"\n"};
  EXPECT_THAT(loadRow(yaml, "0 25 100 101 255", 5), ElementsAre(0.0f, 0.25f, 1.0f, 0.5f, 0.5f));
  yaml.negate = "1";
  EXPECT_THAT(loadRow(yaml, "255 155 0", 3), ElementsAre(0.0f, 1.0f, 0.5f));
}

TEST_F(MapFilesTest, theSamePictureReadsTheSameInEveryFormat) {
  const std::string pixels("\xfe\x00\xcd\x0a\xfe\x00", 6);
  const std::vector<float> expected{1.0f, 0.0f, 1.0f, 0.0f, 1.0f, 0.5f};
  const auto expectSame = [&](const std::string& image) {
    SCOPED_TRACE(image);
    const OccupancyMap map = load({.image = image});
    ASSERT_EQ(map.getWidth(), 3);
    ASSERT_EQ(map.getHeight(), 2);
    EXPECT_EQ(map.getCells(), expected);
  };
  const std::pair<std::string, std::string> texts[] = {
      {"p5.pgm", "P5\n# made by hand\n3 2\n255\n" + pixels},
      {"crlf.pgm", "P5\r\n3 2\r\n255\r\n" + pixels},
      {"longer.pgm", "P5 3 2 255 " + pixels + "more"},
      {"p2.pgm", "P2\n3 # wide\n2\n255\n254 0 205\n10 254 0"},
      {"p2_of_100.pgm", "P2 3 2 100 100 0 80 4 100 0\n"}};
  for (const auto& [name, bytes] : texts) {
    folder.write(name, bytes);
    expectSame(name);
  }
  expectSame(folder / "p5.pgm");
  for (const int channels : {1, 3, 4}) {
    cv::Mat image(2, 3, CV_8UC(channels), cv::Scalar::all(0));
    for (int i = 0; i < 6; ++i) {
      for (int channel = 0; channel < channels; ++channel) {
        image.ptr(i / 3)[i % 3 * channels + channel] = channel < 3 ? pixels[i] : 7 * i;
      }
    }
    const std::string name = std::to_string(channels) + ".png";
    cv::imwrite(folder / name, image);
    expectSame(name);
  }
}

TEST_F(MapFilesTest, aColourCountsAsTheMeanOfItsChannels) {
  cv::Mat image(1, 2, CV_8UC3, cv::Scalar(255, 0, 0));
  image.at<cv::Vec3b>(0, 1) = cv::Vec3b(0, 255, 0);
  cv::imwrite(folder / "colour.png", image);
  const Yaml yaml{.image = "colour.png", .occupied = "1", .free = "0", .more = "mode: scale"};
  EXPECT_THAT(load(yaml).getCells(), ElementsAre(FloatEq(2.0f / 3), FloatEq(2.0f / 3)));
  image = cv::Scalar(30, 60, 90);
  cv::imwrite(folder / "colour.png", image);
  EXPECT_THAT(load({.image = "colour.png", .more = "mode: raw"}).getCells(),
              ElementsAre(FloatEq(0.6f), FloatEq(0.6f)));
}

TEST_F(MapFilesTest, acceptsEveryYamlFormOfANumber) {
  folder.write("map.pgm", "P2 1 1 255 0");
  const OccupancyMap map = load({.resolution = "'+5e-2'  # quoted",
                                 .origin = "\n  - -1.5\n  - .5\n  - 2E0",
                                 .more = "cost: unknown keys are ignored\n"});
  EXPECT_EQ(map.getResolution(), 0.05f);
  EXPECT_EQ(map.getOrigin(), Math::Pose2D(-1.5f, 0.5f, 2.0f));
}

TEST_F(MapFilesTest, aMapWithCoarsePositionsIsLoadedWithAWarning) {
  const test::LogCapture log;
  folder.write("map.pgm", "P5 20 1 255\n" + std::string(20, 'x'));
  load({.resolution = "1", .origin = "[-16383, 16370, 0]"});
  EXPECT_THAT(log.lines(), IsEmpty());
  load({.resolution = "1", .origin = "[0, 16370, 1.57]"});
  EXPECT_THAT(log.lines(), ElementsAre("warning Maps.loadMap: " + folder / "map.yaml" +
                                       ": origin: this map reaches 16389.5 m from zero, where a "
                                       "position is coarser than a millimetre: it has steps of "
                                       "0.00195312 m. Shift it, as with --shift-origin, or choose "
                                       "an origin nearer to zero"));
}

TEST_F(MapFilesTest, aShiftedMapHasAZeroNearbyAndIsSavedUnshifted) {
  const test::LogCapture log;
  folder.write("map.pgm", "P5 20 1 255\n" + std::string(20, 'x'));
  const std::string path =
      folder.write("map.yaml", Yaml{.origin = "[450000.375, 5400000.625, 0.5]"}.text());
  const MapShift shift = readOriginShift(path);
  EXPECT_EQ(shift.x, 450'000.0);
  EXPECT_EQ(shift.y, 5'400'001.0);
  const OccupancyMap loaded = loadMap(path, shift);
  const OccupancyMap copy = loaded;
  saveMap(copy, path);
  EXPECT_THAT(log.lines(), ElementsAre("info Maps.loadMap: " + path +
                                       ": the zero of this map is put at 450000, 5400001 m of its "
                                       "file"));
  for (const OccupancyMap& map : {copy, loadMap(path, shift)}) {
    EXPECT_EQ(map.getOrigin(), Math::Pose2D(0.375f, -0.375f, 0.5f));
    EXPECT_EQ(map.getShift().x, 450'000.0);
    EXPECT_EQ(map.getShift().y, 5'400'001.0);
  }
  loadMap(path, {450'000.0, 5'000'000.0});
  EXPECT_THAT(log.lines().back(), AllOf(HasSubstr("reaches 400001 m from the zero that it was "
                                                  "shifted to, where a position"),
                                        HasSubstr("0.03125 m. Shift it to its origin")));
}

TEST_F(MapFilesTest, aWrongYamlIsRefusedByLineAndKey) {
  const auto with = [](std::string Yaml::*field, const std::string& value) {
    Yaml yaml;
    yaml.*field = value;
    return yaml.text();
  };
  const std::string good = Yaml().text();
  const std::pair<std::string, std::string> cases[] = {
      {with(&Yaml::image, ""), ":1: image: a value expected, none given"},
      {with(&Yaml::image, "\"\""), ":1: image: text expected, \"\" given"},
      {with(&Yaml::resolution, ".nan"), ":2: resolution: a finite number expected, \".nan\" given"},
      {with(&Yaml::resolution, "nan"), ":2: resolution: a finite number expected"},
      {with(&Yaml::resolution, "1e39"), ":2: resolution: a finite number expected"},
      {with(&Yaml::resolution, "0,05"), ":2: resolution: a finite number expected, \"0,05\" given"},
      {with(&Yaml::resolution, "0"), ":2: resolution: metres from 0.000001 to 1000000 expected"},
      {with(&Yaml::resolution, "9e-7"), ":2: resolution: metres from"},
      {with(&Yaml::origin, "[0, 0]"), ":3: origin: a list of 3 (x, y, yaw) expected, a list of 2"},
      {with(&Yaml::origin, "0 0 0"), ":3: origin: a list of 3 (x, y, yaw) expected, \"0 0 0\""},
      {with(&Yaml::origin, "[0, .inf, 0]"), ":3: origin: a finite number expected, \".inf\""},
      {with(&Yaml::origin, "[0, [1], 0]"), ":3: origin: a finite number expected, a list of 1"},
      {with(&Yaml::negate, "2"), ":4: negate: 0 or 1 expected, \"2\" given"},
      {with(&Yaml::occupied, "65"), ":5: occupied_thresh: a number from 0 to 1 expected"},
      {with(&Yaml::free, "0.7"), ":6: free_thresh: a number from 0 to occupied_thresh expected"},
      {good + "mode: Trinary", ":7: mode: trinary, scale or raw expected, \"Trinary\" given"},
      {good + "negate: 1", ":7: negate: one such key expected, another given"},
      {good + "[a]: 1", ":7: a name expected as key"},
      {good + "mode: \"raw", "YAML expected"},
      {"image: map.pgm\n", ": resolution: this key expected, none given"},
      {"- image\n", ":1: keys and values expected"},
      {"", "keys and values expected"},
      {",", ":1: YAML expected: a second document begins here"},
      {good + "---\n" + good, ":7: YAML expected: a second document begins here"},
      {std::string(5000, '['), "YAML expected"},
      {std::string(2 << 20, ' '), "a file of at most 1048576 bytes expected"}};
  folder.write("map.pgm", "P2 1 1 255 0");
  for (const auto& [text, message] : cases) {
    const std::string path = folder.write("map.yaml", text);
    EXPECT_THAT([&] { loadMap(path); },
                ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(path), HasSubstr(message))))
        << text.substr(0, 300);
  }
}

TEST_F(MapFilesTest, aWrongImageIsRefusedByName) {
  const std::pair<std::string, std::string> cases[] = {
      {"P5 2 2 255\r\nabc", "line 2: 4 pixels expected, 3 found"},
      {"P5 2 2 255\n", "line 1: 4 pixels expected, the file ends before"},
      {"P5 10000 20000 255\nabc", "200000000 pixels expected, the file ends before"},
      {"P5 20000 20000 255\nabc", "at most 268435456 pixels expected, 20000 by 20000 given"},
      {"P5 2 2 65535\nabcdefgh", "a maximum from 1 to 255 expected, \"65535\" found"},
      {"P5 2 2 100\nabc\xff", "pixels up to 100 expected"},
      {"P5 0 2 255\nabcd", "a width from 1 to 1048576 expected, \"0\" found"},
      {"P5 2 9999999 255\nabcd", "a height from 1 to 1048576 expected"},
      {"P5 2 x 255\nabcd", "a height from 1 to 1048576 expected, \"x\" found"},
      {"P5", "a width from 1 to 1048576 expected, \"\" found"},
      {"P2\n2 2\n255\n0 1\n256 3\n", "line 5: a pixel from 0 to 255 expected, \"256\" found"},
      {"P2 3 3 255\n0", "9 pixels expected, the file ends before"},
      {"P2 2 2 255 0 -1 2 3", "a pixel from 0 to 255 expected, \"-1\" found"},
      {"P2 2 2 255 0 1.5 2 3", "a pixel from 0 to 255 expected, \"1.5\" found"},
      {"P2 2 2 255 0 1 2 # 3 4", "a pixel from 0 to 255 expected, \"\" found"},
      {"P6 1 1 255 abc", "a PGM (P2 or P5) or PNG image expected"},
      {"\xff\xd8\xff\xe0 JFIF", "a PGM (P2 or P5) or PNG image expected"},
      {"", "a PGM (P2 or P5) or PNG image expected"},
      {"\x89PNG\r\n\x1a\n", "a whole PNG image expected"}};
  for (const auto& [bytes, message] : cases) {
    const std::string path = folder.write("map.pgm", bytes);
    EXPECT_THAT([&] { load({}); },
                ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(path), HasSubstr(message))))
        << bytes;
  }
  for (const char* name : {"none.pgm", "."}) {
    EXPECT_THAT([&] { load({.image = name}); },
                ThrowsMessage<std::runtime_error>(
                    AllOf(HasSubstr(folder / name), HasSubstr("a readable file expected"))));
  }
}

TEST_F(MapFilesTest, a16BitOrTruncatedPngIsRefused) {
  const Yaml yaml{.image = "image.png"};
  const std::string path = folder / "image.png";
  cv::imwrite(path, cv::Mat(2, 2, CV_16U, cv::Scalar(40000)));
  EXPECT_THAT([&] { load(yaml); }, ThrowsMessage<std::runtime_error>(AllOf(
                                       HasSubstr("map.yaml: image: "),
                                       HasSubstr(path + ": a PNG of 8 bits a channel expected"))));
  cv::Mat noise(64, 64, CV_8U);
  cv::randu(noise, 0, 255);
  cv::imwrite(path, noise);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
  EXPECT_THAT([&] { load(yaml); },
              ThrowsMessage<std::runtime_error>(
                  HasSubstr(path + ": a whole PNG image expected, this one ends at byte ")));
  // A head that says two thousand million columns is refused before any of them is decoded.
  cv::imwrite(path, noise);
  std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).seekp(16) << "zz";
  EXPECT_THAT([&] { load(yaml); },
              ThrowsMessage<std::runtime_error>(HasSubstr("at most 268435456 pixels expected, ")));
  cv::imwrite(path, noise);
  std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).seekp(100) << "damage";
  EXPECT_THAT([&] { load(yaml); }, ThrowsMessage<std::runtime_error>(AllOf(
                                       HasSubstr("the chunk at byte "), HasSubstr("is damaged"))));
}

OccupancyMap makeMap(const std::vector<float>& shades) {
  OccupancyMap map(*rc::gen::inRange(1, 12), *rc::gen::inRange(1, 12),
                   0.001f * static_cast<float>(*rc::gen::inRange(1, 4000)),
                   {0.01f * static_cast<float>(*rc::gen::inRange(-9000, 9000)), -3e-7f,
                    0.001f * static_cast<float>(*rc::gen::inRange(-7000, 7000))});
  for (int row = 0; row < map.getHeight(); ++row) {
    for (int column = 0; column < map.getWidth(); ++column) {
      map.setOccupancy(column, row, *rc::gen::elementOf(shades));
    }
  }
  return map;
}

RC_GTEST_FIXTURE_PROP(MapFilesTest, aMapComesBackRoundedAndThenStays, ()) {
  // Three kinds of cells come back as they were.
  const bool isTrinary = *rc::gen::arbitrary<bool>();
  std::vector<float> shades{0.0f, 0.5f, 1.0f};
  if (!isTrinary) shades.insert(shades.end(), {0.123f, 0.4f, 0.77f});
  const OccupancyMap map = makeMap(shades);
  const std::string path = folder / "it's a \"map\": #1.yaml";
  saveMap(map, path);
  const OccupancyMap first = loadMap(path);
  RC_ASSERT(first.getWidth() == map.getWidth());
  RC_ASSERT(first.getHeight() == map.getHeight());
  RC_ASSERT(first.getResolution() == map.getResolution());
  RC_ASSERT(first.getOrigin() == map.getOrigin());
  for (std::size_t i = 0; i < map.getCells().size(); ++i) {
    const float change = std::abs(first.getCells()[i] - map.getCells()[i]);
    RC_ASSERT(change <= (isTrinary ? 0.0f : 0.501f / 255));
  }
  saveMap(first, folder / "second.yml");
  RC_ASSERT(loadMap(folder / "second.yml").getCells() == first.getCells());
}

TEST(ShippedMaps, theShippedMapIsSavedByteForByte) {
  const OccupancyMap map = loadMap(QV_MAPS "/apartment.yaml");
  EXPECT_EQ(map.findOccupancy({9.4f, 6.1f}), 0.0f);
  EXPECT_EQ(map.findOccupancy({0.1f, 6.1f}), 1.0f);
  EXPECT_EQ(map.findOccupancy({-0.2f, 6.1f}), 0.5f);
  const test::TemporaryFolder folder;
  saveMap(map, folder / "apartment.yaml");
  for (const char* name : {"apartment.yaml", "apartment.pgm"}) {
    EXPECT_EQ(test::readBytes(folder / name), test::readBytes(std::string(QV_MAPS "/") + name));
  }
}

TEST_F(MapFilesTest, anUnwritableMapFileIsNamedInTheError) {
  const OccupancyMap map(1, 1, 0.05f, {});
  EXPECT_THAT([&] { saveMap(map, folder / "map.pgm"); },
              ThrowsMessage<std::runtime_error>(
                  EndsWith("map.pgm: a name that ends in .yaml or .yml expected")));
  EXPECT_THAT([&] { saveMap(map, folder / "none/map.yaml"); },
              ThrowsMessage<std::runtime_error>(
                  EndsWith("none/map.pgm: can't be written: No such file or directory")));
}

}  // namespace
}  // namespace QV::robot
