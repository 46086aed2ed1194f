/// \file
/// Collects what the same writer leaves in different media.

#pragma once

#include "tests/Iff/Chunks.h"

#include <functional>
#include <string>

/// What is in a file, a memory block, a pipe, and a pipe through a spool, after \p write opened it by name and mode,
/// wrote and closed it.
struct Outputs
{
  std::string file, memory, pipe, spooled;

  explicit Outputs(const std::function<void(const char* name, const char* mode)>& write)
  {
    const Scratch scratch;
    write(scratch.path("file").c_str(), "w");
    file = scratch.read("file");
    memory.assign(file.size(), '#'); // exactly the room that it needs
    write(memoryName(memory.data(), memory.size()).c_str(), "w");
    write((std::string("pipe:") + FLRCP + " -w x:" + scratch.path("pipe")).c_str(), "w");
    pipe = scratch.read("pipe");
    write((std::string("pipe:") + FLRCP + " -w x:" + scratch.path("spooled")).c_str(), "ws");
    spooled = scratch.read("spooled");
  }
};
