// The frame every export shares, swept over the whole export table with the
// parameters of each export's first row in the checksum table: empty and
// negative sizes touch no buffer, and the families that leave the mask alone
// do. (Every buffer of every checksum row already ends at a guard page, so
// no export reads or writes past its last pixel.)
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "support/export_call.h"

namespace effects::test {
namespace {

std::vector<std::vector<uint8_t>> snapshot(const PreparedCall& call) {
  std::vector<std::vector<uint8_t>> out;
  for (const auto& b : call.buffers()) out.emplace_back(b->data(), b->data() + b->size());
  return out;
}

// The statistics outputs are reset on entry, before any size is looked at.
bool resetOnEntry(const std::string& name) {
  return name == "minimum" || name == "maximum" || name == "minimumNonZero" || name == "sum";
}

bool isSize(const Param& p) { return p.role == Role::Count || p.role == Role::Width || p.role == Role::Height; }

// Runs `text` on guard-paged buffers of the size its sizes imply; when they
// imply no pixel at all, expects every buffer as it was.
void expectInert(const table::Export& e, const CallText& text, const std::string& what) {
  PreparedCall call(e, text);
  const bool empty = call.emptySizes();
  const auto before = snapshot(call);
  call.run();
  if (!empty) return;  // two negative sizes can wrap to a count (width * 4 * height)
  const auto after = snapshot(call);
  for (size_t b = 0; b < before.size(); ++b) {
    if (resetOnEntry(call.buffers()[b]->name)) continue;
    EXPECT_TRUE(before[b] == after[b]) << e.name << " with " << what << " changed " << call.buffers()[b]->name;
  }
}

// Each size on its own, and every size at once (two negative sizes have a
// positive product).
TEST(Frame, EmptyAndNegativeSizesTouchNothing) {
  const char* empties[] = {"0", "-1", "-4", "-2147483648"};
  for (const auto& [name, row] : firstChecksumRows()) {
    const table::Export* e = table::findExport(name);
    if (e == nullptr) continue;
    for (const char* empty : empties) {
      CallText all = row;
      for (int i = 0; i < e->paramCount(); ++i) {
        if (!isSize(e->params[i])) continue;
        CallText one = row;
        one.values[e->params[i].name] = empty;
        all.values[e->params[i].name] = empty;
        expectInert(*e, one, std::string(e->params[i].name) + " = " + empty);
      }
      if (all.values != row.values) expectInert(*e, all, std::string("every size = ") + empty);
    }
  }
}

// The exports that write a mask element (their own or the destination's);
// every other export leaves the mask of each picture it changes as it was.
// (The display pictures of the compositing exports are outputs, not
// pictures changed in place.)
const char* const kWritesMask =
    "CallToneMapping|VexoInvertMask.*|VexoHalftoneMask.*|Vexo(PostBlur|PostBlurMask|MotionBlur|ZoomBlur|RadialBlur|"
    "SharpenMask|DilaterMask|EroderMask)(32|64|128)|VexoClearMask.*|VexoBlankMask.*|VexoNewPicture.*|Vexo(32|64|128)AdvancedMaskDIB|"
    "Vexo(32|64|128)(Direct)?BitBlt(Flip)?MaskDIB|Vexo32DirectMaskDIB|VexoColorMask.*|Convert(64to32|32to64|32to128|64to128|"
    "128to64|128to32)(Fast|Screen|Lock)|Convertfloat3xto64|Vexo(Vertical|Horizontal)(Flip|Mirror).*|"
    "VexoRotate(90_)?(32|64|128)|VexoScale.*|VexoSkew.*";

template <class P>
bool sameMasks(const uint8_t* a, const uint8_t* b, size_t bytes) {
  for (size_t i = 0; i + sizeof(P) <= bytes; i += sizeof(P)) {
    P x, y;
    std::memcpy(&x, a + i, sizeof(P));
    std::memcpy(&y, b + i, sizeof(P));
    if (std::memcmp(&x.mask, &y.mask, sizeof x.mask) != 0) return false;
  }
  return true;
}

TEST(Frame, MaskUntouchedWhereTheFamilyLeavesIt) {
  const std::regex writesMask(kWritesMask);
  for (const auto& [name, row] : firstChecksumRows()) {
    const table::Export* e = table::findExport(name);
    if (e == nullptr || std::regex_match(name, writesMask)) continue;
    PreparedCall call(*e, row);
    const auto before = snapshot(call);
    call.run();
    for (size_t b = 0; b < before.size(); ++b) {
      const Buffer& buf = *call.buffers()[b];
      if (buf.name == "display") continue;
      const uint8_t* now = buf.data();
      bool same = true;
      if (buf.element == Type::Pixel32Ptr) same = sameMasks<Pixel32>(before[b].data(), now, buf.size());
      if (buf.element == Type::Pixel64Ptr) same = sameMasks<Pixel64>(before[b].data(), now, buf.size());
      if (buf.element == Type::Pixel128Ptr) same = sameMasks<Pixel128>(before[b].data(), now, buf.size());
      EXPECT_TRUE(same) << name << " changed the mask of " << buf.name;
    }
  }
}

}  // namespace
}  // namespace effects::test
