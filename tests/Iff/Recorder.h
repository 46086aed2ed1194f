/// \file
/// Writes down the events of a parser.

#pragma once

#include "Foundation/Iff/TiffFile.h"
#include "tests/Iff/Chunks.h"

#include <functional>
#include <string>

/// Notes groups as "FORM:TYPE[", leaves as "NAME=data " and "GEND" as "]", as walk() does but for the end of the file.
/// Answers 0, or what fAnswer gives for an event; that may do anything to the file, which the data have been read from.
class Recorder : public TiffParserCallback
{
public:
  std::string fEvents;
  std::function<int(const std::string& event, TiffFile& file)> fAnswer;

  Recorder() { setMethodsToUse(1); }
  int iffVFormMethod1(TiffFile& file, TiffTag group, TiffTag type) override
  {
    return note(text(group.value()) + ":" + text(type.value()) + "[", file);
  }
  int iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type) override
  {
    return iffVFormMethod1(file, group, type);
  }
  int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
  {
    if (id == TiffTag::kGEND && size == 0)
      return note("]", file);
    std::string data(std::size_t(size < 0 || size > 1000000 ? 4 : size), '\0');
    data.resize(std::size_t(file.get(data.data(), long(data.size()))));
    return note(text(id.value()) + "=" + data + " ", file);
  }

private:
  int note(const std::string& event, TiffFile& file)
  {
    fEvents += event;
    return fAnswer ? fAnswer(event, file) : 0;
  }
};

/// The events of the file in these bytes, and behind them what parse() returned, unless 0.
inline std::string eventsOf(const std::string& bytes)
{
  Recorder recorder;
  TiffFile file(memoryName(bytes.data(), bytes.size()).c_str(), "r");
  file.setCallbackObject(&recorder);
  const int status = file.parse();
  return recorder.fEvents + (status == 0 ? "" : std::to_string(status));
}
