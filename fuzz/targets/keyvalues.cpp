// The KeyValues reader over an in-memory file system. The input is up to four files cut at byte 0x01:
// main.txt, then a.txt, b.txt and c.txt for main.txt's #include lines. The tree read is written out, read
// back, copied and walked.
#include "KeyValues.h"
#include "fuzz_target.h"
#include "memfs.h"
#include "output_capture.h"

namespace {

const char* const kFiles[] = {"main.txt", "a.txt", "b.txt", "c.txt"};

void Walk(KeyValues* node, int depth) {
  for (; node; node = node->GetNextKey()) {
    node->GetInt();
    node->GetFloat();
    node->GetString();
    node->GetDataType();
    if (depth < 64) Walk(node->GetFirstSubKey(), depth + 1);
  }
}

}  // namespace

TW_FUZZ_TARGET(keyvalues) {
  OutputCapture quiet;
  MemoryFileSystem fs;
  std::vector<std::string> files = FuzzSplit(data, size, '\x01', 4);
  for (size_t i = 0; i < files.size(); ++i) fs.files[kFiles[i]] = files[i];

  KeyValues* tree = new KeyValues("fuzz");
  tree->LoadFromFile(&fs, "main.txt");
  Walk(tree, 0);
  tree->SaveToFile(&fs, "out.txt");
  KeyValues* again = new KeyValues("again");
  again->LoadFromBuffer("out.txt", fs.files["out.txt"].c_str(), &fs);
  KeyValues* copy = tree->MakeCopy();
  Walk(copy, 0);
  copy->deleteThis();
  again->deleteThis();
  tree->deleteThis();
}
