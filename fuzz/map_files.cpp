/**
 * Maps of any bytes: a YAML file that is damaged, and images in each form. What is loaded can be
 * saved, and then loads the same; what is refused is named.
 */
#include "robot/maps/map_files.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <zlib.h>

#include "fuzz/damaged_text.h"
#include "fuzz/quiet_run.h"
#include "fuzz/value_decoder.h"

namespace QV::fuzz {
namespace {

constexpr char kSoundYaml[] =
    "image: image\nresolution: 0.05\norigin: [1, -2.5, 0.5]\nnegate: 0\noccupied_thresh: 0.65\n"
    "free_thresh: 0.196\nmode: scale\n";
constexpr std::array<std::string_view, 32> kOthers = {
    "",     "0",   "1",     "-1",      "0.5",    "1e-7", "1e39", "1e400", ".nan", "+.5", "0x1",
    "true", "raw", "scale", "trinary", "image",  "mode", "\n",   ":",     "[",    "]",   ",",
    "- ",   "---", "&a ",   "*a",      "!!str ", "\"",   "'",    "#",     "? ",   "\t"};
constexpr std::size_t kHeadRest = 5;

/** A folder for one process, removed at its end. */
struct Folder {
  Folder() { check(mkdtemp(path.data()) != nullptr, "no folder"); }
  ~Folder() { std::filesystem::remove_all(path); }
  std::string write(const std::string& name, const std::string& bytes) {
    std::string& there = files[name];
    // Most inputs leave one of the two files as it is.
    if (there != bytes) std::ofstream(path + "/" + name, std::ios::binary) << (there = bytes);
    return path + "/" + name;
  }
  // In memory: ten times as many inputs as on a disk.
  std::string path = "/dev/shm/qv_fuzz_XXXXXX";
  std::map<std::string, std::string> files;
};

std::string bigEndian(std::uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
  return bytes;
}

std::string chunk(const std::string& type, const std::string& content) {
  const std::string counted = type + content;
  const auto* const bytes = reinterpret_cast<const Bytef*>(counted.data());
  return bigEndian(static_cast<std::uint32_t>(content.size())) + counted +
         bigEndian(static_cast<std::uint32_t>(crc32_z(0, bytes, counted.size())));
}

std::string compressed(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string result(size, '\0');
  compress2(reinterpret_cast<Bytef*>(result.data()), &size,
            reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), 1);
  result.resize(size);
  return result;
}

/** Sides, the rest of the head, and samples, in a frame whose sums are right. */
std::string pngOf(const std::string& bytes) {
  if (bytes.size() < 2 + kHeadRest) return bytes;
  const auto side = [&](std::size_t at) {
    return bigEndian(static_cast<unsigned char>(bytes[at]));
  };
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", side(0) + side(1) + bytes.substr(2, kHeadRest)) +
         chunk("PLTE", bytes.substr(0, 6)) +
         chunk("IDAT", compressed(bytes.substr(2 + kHeadRest))) + chunk("IEND", "");
}

void checkSaved(const Folder& folder, const OccupancyMap& map) {
  const std::string path = folder.path + "/saved.yaml";
  robot::saveMap(map, path);
  const OccupancyMap saved = robot::loadMap(path);
  check(saved.getOrigin() == map.getOrigin() && saved.getResolution() == map.getResolution() &&
            saved.getCells().size() == map.getCells().size(),
        "another map once it is saved");
  for (std::size_t i = 0; i < map.getCells().size(); ++i)
    check(std::abs(saved.getCells()[i] - map.getCells()[i]) < 0.003f, "another cell");
}

std::string yamlOf(int choice, std::span<const std::uint8_t> bytes) {
  static const SoundText sound(kSoundYaml, kOthers);
  if (choice > 1) return sound.changed(bytes);
  return damaged(choice == 0 ? "" : kSoundYaml, bytes.data(), bytes.size());
}

/** 1 byte says which file is damaged, and how; Netpbm and PNG have half of the inputs. */
void read(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return;
  static Folder folder;
  const int choice = data[0] % 8;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string yaml =
      folder.write("map.yaml", choice < 4 ? yamlOf(choice, {data + 1, size - 1}) : kSoundYaml);
  folder.write("image", choice < 4 ? "P2 2 1 255 7 100" : choice < 6 ? bytes : pngOf(bytes));
  try {
    const OccupancyMap map = robot::loadMap(yaml);
    // To save and to load again takes longer than the first time.
    if (isOneOf(8, data, size)) checkSaved(folder, map);
  } catch (const std::runtime_error& error) {
    check(std::string(error.what()).find(folder.path) != std::string::npos, "no file is named");
  }
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return QV::fuzz::runQuietly(QV::fuzz::read, data, size);
}
