// host PLUGIN: loads the plug-in of plugin.cpp twice, and each time has its values made, stored in a file and read
// back. While it is not loaded, the file is read and written back all the same.
#include <Foundation/Container/PtrArrays.h>
#include <Foundation/Data/TargList.h>
#include <Foundation/Data/TblindData.h>
#include <Foundation/Data/TdataCompound.h>
#include <Foundation/Data/TdataReader.h>
#include <Foundation/Data/TdataUnknown.h>
#include <Foundation/Data/TmetaLetter.h>
#include <Foundation/Data/TtypeDictionary.h>
#include <Foundation/Iff/TiffFile.h>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

namespace {

#ifdef _WIN32
void* load(const char* plugin)
{
  return LoadLibraryA(plugin);
}
bool unload(void* plugin)
{
  return FreeLibrary(static_cast<HMODULE>(plugin));
}
#else
void* load(const char* plugin)
{
  return dlopen(plugin, RTLD_NOW);
}
bool unload(void* plugin)
{
  return dlclose(plugin) == 0;
}
#endif

void require(bool good, const char* what)
{
  if (!good)
    throw std::runtime_error(what);
}

Tdata readFile(const char* name)
{
  TiffFile file(name, "r");
  TdataReader reader;
  file.setCallbackObject(&reader);
  require(file.parse() == 0 && reader.values().length() == 1, "the file cannot be read");
  return reader.values()[0];
}

void writeFile(const char* name, const Tdata& value)
{
  TiffFile file(name, "w");
  require(value.writeBinary(file) == 0 && file.close() == 0, "the file cannot be written");
}

const Tdata& child(const Tdata& value, unsigned int index)
{
  return (*value.letterAs<TdataCompound>())[index];
}

// How many of the two kinds are known, of all ways to ask for them.
int waysToTheKinds()
{
  int ways = 0;
  for (const char* name : {"TblindTimeData", "frames"})
  {
    Tmetaclass* base = *name == 'f' ? TdataLetter::fTypeid : TblindData::fTypeid;
    const std::unique_ptr<TtypeDictionary> dictionary(Tmetaclass::generateDictionaryFor(base));
    TtypeidArray derived;
    Tmetaclass::getDerivedClasses(base, derived);
    for (const Tmetaclass* type : derived)
      ways += type->isexactlya(name);
    ways += dictionary->search(name) != nullptr;
    ways += Tmetaclass::findClass(name) != nullptr;
  }
  ways += Tmetaclass::findClass(TiffTag("FRMS")) != nullptr;
  ways += TmetaLetter::findTypeid("frames") != nullptr;
  ways += TmetaLetter::findTypeid(TiffTag("FRMS")) != nullptr;
  return ways;
}

Tdata framesOf(const char* text)
{
  Tdata frames(TmetaLetter::construct("frames"));
  TstringArgList arguments;
  arguments.setText(text);
  unsigned int next = 0;
  require(frames.readASCII(arguments, next, -1) == 0 && next == 2, "frames cannot be read");
  return frames;
}

void usePlugin(const char* file)
{
  std::unique_ptr<TblindData> time(
    static_cast<TblindData*>(Tmetaclass::findClass("TblindTimeData")->construct(TblindData::fTypeid)));
  time->setId(7);
  std::cout << *time << '\n';

  Tdata frames = framesOf("12 48");
  const Tdata others = framesOf("40 50");
  require(others != frames, "frames are equal that are not");
  frames += others;
  std::cout << frames << '\n';
  require(frames.letter().text() == "12 50", "frames are added up wrongly");
  require(Tdata(TmetaLetter::construct(TiffTag("FRMS"))).letter().text() == "0 0", "the tag is for another letter");

  Tdata scene(new TdataCompound);
  auto* children = scene.writableAs<TdataCompound>();
  children->addData(frames);
  children->addData(1.5);
  writeFile(file, scene);
  require(readFile(file) == scene, "what was read is not what was written");
}

void doWithoutPlugin(const char* file)
{
  const Tdata scene = readFile(file);
  std::cout << scene << '\n';
  const auto* frames = child(scene, 0).letterAs<TdataUnknown>();
  require(frames && frames->text() == "46524d53"
                                      "0000000c"
                                      "00000032",
          "the unknown letter is not what was stored");
  writeFile("copy.iff", scene);
  char original[64], copy[64];
  const long length = TiffFile(file, "r").read(original, sizeof original);
  require(length > 0 && TiffFile("copy.iff", "r").read(copy, sizeof copy) == length &&
            std::equal(original, original + length, copy),
          "the copy is not what was stored");
}

} // namespace

int main(int argc, char** argv)
try
{
  require(argc == 2, "which plug-in?");
  for (int i = 0; i < 2; ++i)
  {
    require(waysToTheKinds() == 0, "the kinds are known before the plug-in is loaded");
    void* plugin = load(argv[1]);
    require(plugin, "the plug-in cannot be loaded");
    require(waysToTheKinds() == 9, "a kind of the plug-in is not known");
    usePlugin("frames.iff");
    require(unload(plugin), "the plug-in cannot be unloaded");
    require(waysToTheKinds() == 0, "something of the plug-in is left");
    doWithoutPlugin("frames.iff");
  }
  return 0;
}
catch (const std::exception& failure)
{
  std::cerr << failure.what() << '\n';
  return 1;
}
