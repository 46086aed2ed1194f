#include "Foundation/Debug/TdebugOutputFile.h"

#include <cstdio>

TdebugOutputFile::TdebugOutputFile(const char* fileName, int indent)
  : fFileName(fileName)
{
  setTarget(fFile, indent);
}

TdebugOutputFile::~TdebugOutputFile() = default;

unsigned char TdebugOutputFile::open()
{
  if (fState == kOpen)
    return 1;
  fFile.clear();
  if (fFileName)
    fFile.open(fFileName, fState == kAppendNext ? std::ios::out | std::ios::app : std::ios::out);
  if (!fFile.is_open())
    return 0;
  fState = kOpen;
  return 1;
}

void TdebugOutputFile::close()
{
  if (fState != kOpen)
    return;
  fFile.close();
  fState = kAppendNext;
}

void TdebugOutputFile::reportString()
{
  if (fState == kOpen)
    TdebugOutput::reportString();
}

void TdebugOutputFile::reportString(const char* text)
{
  if (!text || !open())
    return;
  fFile.clear(); // a disk that was full may have room again
  TdebugOutput::reportString(text);
}

void TdebugOutputFile::getName(char* buffer)
{
  std::snprintf(buffer, kNameSize, "%s", fFileName ? fFileName : "");
}
