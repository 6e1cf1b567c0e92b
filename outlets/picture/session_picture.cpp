#include "outlets/picture/session_picture.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

#include "outlets/picture/internal/draw_session.h"
#include "platform/ko/internal/write_error.h"
#include "platform/vision/internal/png_image.h"
#include "session/usage_error.h"

namespace QV::outlets {

void checkPicturePath(const std::string& path) {
  const std::filesystem::path file(path);
  if (file.extension() != ".png")
    throw session::UsageError(path + ": a path that ends in .png expected");
  const auto folder = file.has_parent_path() ? file.parent_path().string() : ".";
  errno = 0;
  if (std::filesystem::is_directory(folder)) {
    if (access(folder.c_str(), W_OK) == 0) return;
  } else {
    errno = std::filesystem::exists(folder) ? ENOTDIR : ENOENT;
  }
  throw session::UsageError(ko::detail::cannotWrite(path));
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
  const std::string png = QV::detail::encodePng(drawSession(way, *last));
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << png;
  file.close();
  if (!file) throw std::runtime_error(ko::detail::cannotWrite(path));
}

}  // namespace QV::outlets
