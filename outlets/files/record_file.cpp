#include "outlets/files/record_file.h"

#include <cerrno>
#include <iostream>
#include <stdexcept>

#include "outlets/files/internal/record_text.h"
#include "platform/ko/internal/write_error.h"

namespace QV::outlets {

RecordFile::RecordFile(const std::string& path)
    : path(path), isCsv(path.ends_with(".csv")), out(path == "-" ? std::cout : file) {
  errno = 0;
  if (path != "-") file.open(path);
  if (isCsv) writeCsvTitles(out);
  xCheck();
}

void RecordFile::show(const session::Snapshot& snapshot) {
  for (const auto& record : session::recordsOf(snapshot)) xWrite(record, snapshot);
  xCheck();
}

void RecordFile::xWrite(const Math::MetricalData& record, const session::Snapshot& snapshot) {
  if (isCsv) return writeCsv(out, record, snapshot);
  out << toText(toJson(record, snapshot)) << '\n';
}

void RecordFile::finish() {
  if (file.is_open()) file.close();
  out.flush();
  xCheck();
}

void RecordFile::xCheck() const {
  if (!out)
    throw std::runtime_error(ko::detail::cannotWrite(path == "-" ? "standard output" : path));
}

}  // namespace QV::outlets
