#include "Foundation/Iff/TiffParserCallback.h"

// clang-format off
int TiffParserCallback::iffVListMethod1(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVFormMethod1(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVLeafMethod1(TiffFile&, TiffTag, Tint32) { return 0; }
int TiffParserCallback::iffVListMethod2(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVFormMethod2(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVLeafMethod2(TiffFile&, TiffTag, Tint32) { return 0; }
int TiffParserCallback::iffVListMethod3(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVFormMethod3(TiffFile&, TiffTag, TiffTag) { return 0; }
int TiffParserCallback::iffVLeafMethod3(TiffFile&, TiffTag, Tint32) { return 0; }
// clang-format on

TiffParserCallback::~TiffParserCallback() = default;
