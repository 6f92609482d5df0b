#include "events/metadata_files.h"

#include <sys/stat.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "events/integer_attribute.h"
#include "recorder/recorder_places.h"
#include "store/recorder_arithmetic.h"
#include "store/regular_file.h"

const char* const kMetadataDirectory = Recorder::kMetadataFolder;

namespace {

bool Exists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

// Opens a description file for the XML loader, or gives null when it cannot
// be read as one (not there, unreadable, or no regular file).
std::FILE* OpenDescription(const std::string& path) {
  bool notRegular = false;
  const int descriptor = OpenRegularFile(path.c_str(), notRegular);
  if (descriptor < 0) {
    return nullptr;
  }
  std::FILE* file = fdopen(descriptor, "rb");
  if (file == nullptr) {
    close(descriptor);
  }
  return file;
}

// Bytes one segment adds: a stop of 0 means "to the end of the stream file";
// a negative stop, or a negative start running to the end, adds nothing.
int32_t SegmentBytes(int32_t start, int32_t stop) {
  if (stop == 0) {
    return start >= 0 ? WrappedDifference(kStreamFileBytes, start) : 0;
  }
  return stop > 0 ? WrappedDifference(stop, start) : 0;
}

// Adds the segments of one stream element to `total`. False when a segment is
// unusable: the message is written and nothing after it may be counted.
bool AddStreamSegments(const tinyxml2::XMLElement& stream, int64_t& total) {
  const tinyxml2::XMLNode* first = stream.FirstChild();
  // A stream that opens with a comment or text is not a list of segments.
  if (first == nullptr || first->ToElement() == nullptr) {
    return true;
  }
  for (const tinyxml2::XMLElement* segment = first->ToElement(); segment != nullptr;
       segment = segment->NextSiblingElement()) {
    if (segment->Attribute("name") == nullptr) {
      std::cerr << ":'name' attribute missing";
      return false;
    }
    int start = 0;
    int stop = 0;
    int source = 0;
    if (IntAttribute(*segment, "start-offset", start) == tinyxml2::XML_WRONG_ATTRIBUTE_TYPE) {
      std::cerr << "Start offset invalid";
      return false;
    }
    if (IntAttribute(*segment, "stop-offset", stop) == tinyxml2::XML_WRONG_ATTRIBUTE_TYPE) {
      std::cerr << "Stop offset invalid";
      return false;
    }
    // The source file number is not summed, but a segment without one is corrupt.
    if (IntAttribute(*segment, "src", source) != tinyxml2::XML_SUCCESS) {
      std::cerr << "Source file number missing";
      return false;
    }
    total += SegmentBytes(start, stop);
  }
  return true;
}

}  // namespace

bool IsStaged(const std::string& path) { return IsStagedWith(path, Exists); }

bool IsStagedWith(const std::string& path, PathProbe exists) {
  // Both files of the pair must be there; without the description the data
  // file is not looked at.
  return exists(path + ".xml") && exists(path + ".mtd");
}

int64_t EventSize(const std::string& reid) { return EventSizeIn(kMetadataDirectory, reid); }

int64_t EventSizeIn(const std::string& directory, const std::string& reid) {
  const std::string base = directory + reid;
  const std::string descriptionPath = base + ".xml";
  const std::string dataPath = base + ".mtd";

  struct stat data;
  if (stat(dataPath.c_str(), &data) != 0) {
    std::cerr << "Failed to stat file: " << dataPath;
    return 0;
  }
  // The recorder keeps file sizes in 32 bits.
  int64_t total = static_cast<int32_t>(static_cast<uint32_t>(data.st_size));

  // One document serves every event: loading clears it first, and its
  // memory pools stay for the next description instead of being set up and
  // torn down for each.
  thread_local tinyxml2::XMLDocument description;
  std::FILE* file = OpenDescription(descriptionPath);
  const bool loaded = file != nullptr && description.LoadFile(file) == tinyxml2::XML_SUCCESS;
  if (file != nullptr) {
    std::fclose(file);
  }
  if (!loaded) {
    std::cerr << "Failed to load XML file: " << descriptionPath;
    return total;
  }
  const tinyxml2::XMLElement* stream = description.FirstChildElement("recording-event");
  for (const char* name : {"video", "streams", "stream"}) {
    if (stream == nullptr) {
      return total;
    }
    stream = stream->FirstChildElement(name);
  }
  // Every sibling after the first stream is a stream too, whatever its name.
  for (; stream != nullptr; stream = stream->NextSiblingElement()) {
    if (!AddStreamSegments(*stream, total)) {
      return total;
    }
  }
  return total;
}
