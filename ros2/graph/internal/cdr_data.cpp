#include "ros2/graph/internal/cdr_data.h"

#include <algorithm>
#include <cstring>
#include <dds/ddsi/ddsi_keyhash.h>
#include <dds/ddsi/q_radmin.h>

namespace QV::ros2 {
namespace {

const CdrData& cdrOf(const ddsi_serdata* data) {
  return *static_cast<const CdrData*>(data);
}

/** Topics of ROS have no keys: all messages are of one instance. */
ddsi_serdata* makeKey(const ddsi_sertype* type) {
  return new CdrData(type, SDK_KEY, {});
}

Bytes bytesOf(const nn_rdata* fragment, std::size_t size) {
  Bytes bytes;
  bytes.reserve(size + 3);
  for (; fragment != nullptr; fragment = fragment->nextfrag) {
    // Fragments may overlap.
    if (fragment->maxp1 <= bytes.size()) continue;
    const std::uint8_t* const payload =
        NN_RMSG_PAYLOADOFF(fragment->rmsg, NN_RDATA_PAYLOAD_OFF(fragment));
    const std::size_t known = bytes.size() - fragment->min;
    bytes.insert(bytes.end(), payload + known, payload + (fragment->maxp1 - fragment->min));
  }
  bytes.resize(std::min(bytes.size(), size));
  return bytes;
}

ddsi_serdata* fromFragments(const ddsi_sertype* type, ddsi_serdata_kind kind,
                            const nn_rdata* fragments, std::size_t size) {
  return new CdrData(type, kind, bytesOf(fragments, size));
}

ddsi_serdata* fromVector(const ddsi_sertype* type, ddsi_serdata_kind kind, ddsrt_msg_iovlen_t count,
                         const ddsrt_iovec_t* parts, std::size_t size) {
  Bytes bytes;
  bytes.reserve(size + 3);
  for (ddsrt_msg_iovlen_t i = 0; i < count; ++i) {
    const auto* const begin = static_cast<const std::uint8_t*>(parts[i].iov_base);
    bytes.insert(bytes.end(), begin, begin + std::min(parts[i].iov_len, size - bytes.size()));
  }
  return new CdrData(type, kind, std::move(bytes));
}

ddsi_serdata* refer(const ddsi_serdata* data, std::size_t offset, std::size_t size,
                    ddsrt_iovec_t* part) {
  part->iov_base = const_cast<std::uint8_t*>(cdrOf(data).bytes.data()) + offset;
  part->iov_len = size;
  return ddsi_serdata_ref(data);
}

bool copyTo(const ddsi_serdata* data, void* sample, void**, void*) {
  const CdrData& cdr = cdrOf(data);
  const auto begin = cdr.bytes.begin();
  static_cast<Bytes*>(sample)->assign(begin, begin + static_cast<std::ptrdiff_t>(cdr.size));
  return true;
}

const ddsi_serdata_ops& dataOperations() {
  static const ddsi_serdata_ops operations = [] {
    ddsi_serdata_ops ops{};
    ops.eqkey = [](const ddsi_serdata*, const ddsi_serdata*) { return true; };
    ops.get_size = [](const ddsi_serdata* data) {
      return static_cast<std::uint32_t>(cdrOf(data).size);
    };
    ops.from_ser = fromFragments;
    ops.from_ser_iov = fromVector;
    ops.from_keyhash = [](const ddsi_sertype* type, const ddsi_keyhash*) { return makeKey(type); };
    // Samples are messages in CDR: there is no other form of them here.
    ops.from_sample = [](const ddsi_sertype* type, ddsi_serdata_kind kind,
                         const void* sample) -> ddsi_serdata* {
      return new CdrData(type, kind, *static_cast<const Bytes*>(sample));
    };
    ops.to_ser = [](const ddsi_serdata* data, std::size_t offset, std::size_t size, void* buffer) {
      std::memcpy(buffer, cdrOf(data).bytes.data() + offset, size);
    };
    ops.to_ser_ref = refer;
    ops.to_ser_unref = [](ddsi_serdata* data, const ddsrt_iovec_t*) { ddsi_serdata_unref(data); };
    ops.to_sample = copyTo;
    ops.to_untyped = [](const ddsi_serdata* data) { return makeKey(data->type); };
    ops.untyped_to_sample = [](const ddsi_sertype*, const ddsi_serdata*, void*, void**, void*) {
      return true;
    };
    ops.free = [](ddsi_serdata* data) { delete static_cast<CdrData*>(data); };
    ops.print = [](const ddsi_sertype*, const ddsi_serdata*, char* text,
                   std::size_t) -> std::size_t {
      *text = '\0';
      return 0;
    };
    ops.get_keyhash = [](const ddsi_serdata*, ddsi_keyhash* hash, bool) { *hash = {}; };
    return ops;
  }();
  return operations;
}

const ddsi_sertype_ops& typeOperations() {
  static const ddsi_sertype_ops operations = [] {
    ddsi_sertype_ops ops{};
    ops.version = ddsi_sertype_v0;
    ops.free = [](ddsi_sertype* type) {
      ddsi_sertype_fini(type);
      delete type;
    };
    // Types of one name are one type.
    ops.equal = [](const ddsi_sertype*, const ddsi_sertype*) { return true; };
    ops.hash = [](const ddsi_sertype*) { return 0u; };
    ops.zero_samples = [](const ddsi_sertype*, void*, std::size_t) {};
    ops.realloc_samples = [](void**, const ddsi_sertype*, void*, std::size_t, std::size_t) {};
    ops.free_samples = [](const ddsi_sertype*, void**, std::size_t, dds_free_op_t) {};
    return ops;
  }();
  return operations;
}

}  // namespace

CdrData::CdrData(const ddsi_sertype* type, ddsi_serdata_kind kind, Bytes cdr)
    : ddsi_serdata{}, bytes(std::move(cdr)), size(bytes.size()) {
  ddsi_serdata_init(this, type, kind);
  hash = type->serdata_basehash;
  bytes.resize((size + 3) / 4 * 4);
}

ddsi_sertype* makeCdrType(const std::string& ddsName) {
  auto* const type = new ddsi_sertype{};
  ddsi_sertype_init(type, ddsName.c_str(), &typeOperations(), &dataOperations(), true);
  type->allowed_data_representation = DDS_DATA_REPRESENTATION_FLAG_XCDR1;
  return type;
}

}  // namespace QV::ros2
