#pragma once

#include <dds/dds.h>
#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <string>

#include "platform/api.h"
#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** A message as the engine passes it on: CDR, which nobody takes apart on the way. */
struct CdrData : ddsi_serdata {
  CdrData(const ddsi_sertype* type, ddsi_serdata_kind kind, Bytes cdr);

  /** The bytes, with zeros up to a multiple of 4. */
  Bytes bytes;
  std::size_t size;
};

/**
 * Makes a type for dds_create_topic_sertype, which owns it then; before, ddsi_sertype_unref frees
 * it.
 */
QV_API ddsi_sertype* makeCdrType(const std::string& ddsName);

}  // namespace QV::ros2
