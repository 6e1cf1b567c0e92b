#include "outlets/picture/session_picture.h"

#include <filesystem>
#include <stdexcept>
#include <unistd.h>
#include <utility>

#include <opencv2/imgcodecs.hpp>

#include "outlets/picture/internal/draw_session.h"
#include "session/usage_error.h"

namespace QV::outlets {

void checkPicturePath(const std::string& path) {
  const std::filesystem::path file(path);
  if (file.extension() != ".png")
    throw session::UsageError(path + ": a path that ends in .png expected");
  const auto folder = file.has_parent_path() ? file.parent_path().string() : ".";
  if (std::filesystem::is_directory(folder) && access(folder.c_str(), W_OK) == 0) return;
  throw session::UsageError(path + ": can't be written, a folder that can be expected");
}

SessionPicture::SessionPicture(std::string givenPath) : path(std::move(givenPath)) {
  checkPicturePath(path);
}

void SessionPicture::show(const session::Snapshot& snapshot) {
  way.push_back(snapshot.pose);
  last = snapshot;
}

void SessionPicture::finish() {
  if (!last) return;
  if (!cv::imwrite(path, drawSession(way, *last))) {
    throw std::runtime_error(path + ": can't be written");
  }
}

}  // namespace QV::outlets
