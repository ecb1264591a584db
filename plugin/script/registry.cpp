// CScriptRegistry: loaded scripts, blocks by full name and event chains by event name. The event chains are
// doubly linked through the blocks; the event table holds each chain's head.
#include "script/registry.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

#include "host/diagnostics.h"
#include "language/textbuf.h"

CScriptRegistry::CScriptRegistry() = default;

CScriptRegistry::~CScriptRegistry() {
  for (CScript* script = m_scripts; script;) {
    CScript* following = script->next;
    delete script;
    script = following;
  }
}

CScript* CScriptRegistry::FindScript(const char* name) const {
  if (!name) return nullptr;
  for (CScript* script = m_scripts; script; script = script->next)
    if (strcasecmp(script->name, name) == 0) return script;
  return nullptr;
}

void CScriptRegistry::SetScriptEnabled(const char* name, bool enabled) {
  if (CScript* script = FindScript(name)) script->enabled = enabled;
}

bool CScriptRegistry::AddScript(CScript* script) {
  if (!script || FindScript(script->name)) return false;
  CScript** tail = &m_scripts;
  CScript* last = nullptr;
  while (*tail) {
    last = *tail;
    tail = &(*tail)->next;
  }
  *tail = script;
  script->prev = last;
  script->next = nullptr;
  AddBlocks(script);
  return true;
}

void CScriptRegistry::AddBlocks(CScript* script) {
  for (CBlock* block = script->firstBlock; block; block = block->next) {
    DbgMsg(4, "AddBlocks: %s\n", block->name);
    m_blocks.Insert(block->name, block);
    if (!block->isEvent) continue;
    DbgMsg(4, "Is an event block: %s\n", block->baseName);
    LinkEvent(block);
  }
}

void CScriptRegistry::LinkEvent(CBlock* block) {
  CBlock** head = m_events.FindValue(block->baseName);
  if (!head) {
    block->nextEvent = block->prevEvent = nullptr;
    m_events.Insert(block->baseName, block);
    DbgMsg(3, "AddEvents bucket created: %s - %d\n", block->baseName, int(m_events.Count()));
    return;
  }
  DbgMsg(4, "AddBlocks Event Bucket Found! %s\n", block->baseName);
  CBlock* tail = *head;
  while (tail->nextEvent) {
    DbgMsg(4, "---Bucket: %s\n", tail->name);
    tail = tail->nextEvent;
  }
  DbgMsg(4, "---Bucket. %s\n", tail->name);
  tail->nextEvent = block;
  block->prevEvent = tail;
  block->nextEvent = nullptr;
}

void CScriptRegistry::UnlinkEvent(CBlock* block) {
  DbgMsg(4, "%s: is an event\n", block->name);
  CBlock* successor = block->nextEvent;
  if (block->prevEvent) {
    block->prevEvent->nextEvent = successor;
    DbgMsg(4, "%s: the parent's (%s) next should be our next so we can leave the chain.\n", block->name,
           block->prevEvent->name);
    if (successor) {
      successor->prevEvent = block->prevEvent;
      DbgMsg(3, "%s: change our child's (%s) prev block to point to our former parent\n", block->name,
             successor->name);
    }
    return;
  }
  DbgMsg(4, "%s: head event, we have to remove the hash entry\n", block->name);
  BlockTable::Handle entry = m_events.Find(block->baseName);
  if (entry != BlockTable::kNotFound && *m_events.Get(entry) == block) {
    m_events.Remove(entry);
    DbgMsg(4, "%s: head event, we removed the hash entry\n", block->name);
  }
  DbgMsg(4, "%s: head event, we are done removing the hash entry\n", block->name);
  if (successor) {
    DbgMsg(4, "%s: if we were the head, we have to move the head\n", block->name);
    m_events.Insert(successor->baseName, successor);
    DbgMsg(3, "AddEvents: %s\n", successor->baseName);
    successor->prevEvent = nullptr;
  }
}

// Takes the block out of both tables. An entry of the block table is removed only when it names this very
// block: with two blocks of one name, the entry belongs to the first.
void CScriptRegistry::RemoveBlock(CBlock* block) {
  BlockTable::Handle entry = m_blocks.Find(block->name);
  if (entry != BlockTable::kNotFound && *m_blocks.Get(entry) == block) m_blocks.Remove(entry);
  if (block->isEvent) UnlinkEvent(block);
}

bool CScriptRegistry::RemoveScript(const char* name) {
  CScript* script = FindScript(name);
  if (!script) return false;
  for (CBlock* block = script->firstBlock; block; block = block->next) RemoveBlock(block);
  if (script->prev)
    script->prev->next = script->next;
  else
    m_scripts = script->next;
  if (script->next) script->next->prev = script->prev;
  delete script;
  return true;
}

CBlock* CScriptRegistry::GetBlock(const char* fullName) {
  DbgMsg(5, "GetBlock: \"%s\".\n", fullName);
  CBlock** found = m_blocks.FindValue(fullName);
  if (!found) {
    DbgMsg(1, "GetBlock. Not found: %s\n", fullName);
    return nullptr;
  }
  DbgMsg(3, "Found: %s\n", fullName);
  return *found;
}

BlockHandle CScriptRegistry::GetEventHash(const char* fullName) {
  DbgMsg(5, "GetEventHash: \"%s\".\n", fullName);
  CBlock** found = m_blocks.FindValue(fullName);
  if (!found) {
    DbgMsg(1, "GetEventHash. Not found: %s\n", fullName);
    return HandleTable<CBlock>::kNone;
  }
  DbgMsg(3, "Found: %s\n", fullName);
  return (*found)->handle;
}

CBlock* CScriptRegistry::GetEvent(BlockHandle handle) {
  CBlock* block = g_blockHandles.Get(handle);
  if (!block || !block->isEvent) {  // a plain block's handle names no event section
    DbgMsg(1, "GetEvent. Not found: %llu\n", static_cast<unsigned long long>(handle));
    return nullptr;
  }
  DbgMsg(3, "GetEvent Found: %llu\n", static_cast<unsigned long long>(handle));
  return block;
}

CBlock* CScriptRegistry::GetEventHead(const char* eventName) {
  CBlock** head = m_events.FindValue(eventName);
  return head ? *head : nullptr;
}

bool CScriptRegistry::HasEvent(const char* eventName) {
  DbgMsg(3, "Trying event: %s\n", eventName);
  return GetEventHead(eventName) != nullptr;
}

char* CScriptRegistry::BuildEventCommands(const char* eventName) {
  std::string text;
  size_t lineStart = 0;
  for (CBlock* block = GetEventHead(eventName); block; block = block->nextEvent) {
    if (!block->script || !block->script->enabled) continue;
    char command[48];
    int n = snprintf(command, sizeof command, "tw__de %llx;",
                     static_cast<unsigned long long>(GetEventHash(block->name)));
    if (text.size() - lineStart + size_t(n) > size_t(kMaxConsoleLine)) {
      text += '\n';
      lineStart = text.size();
    }
    text += command;
  }
  text += '\n';
  char* result = static_cast<char*>(malloc(text.size() + 1));
  memcpy(result, text.c_str(), text.size() + 1);
  return result;
}
