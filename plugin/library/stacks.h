// Named stacks: the table of last-in-first-out stacks of texts behind the `stack` command. A name is found
// ignoring case within its hash bucket, but the hash counts case, so names that differ in case are in
// effect different stacks. Stacks live until deleted, across level changes.
#pragma once

#include <string>
#include <vector>

// Entries from the bottom; the top is the last.
using NamedStack = std::vector<std::string>;

// The stack of that name, or null. The pointer holds until the next create or delete.
NamedStack* Stacks_Find(const char* name);
// A new empty stack; null when the name is taken (the stack there is left as it is).
NamedStack* Stacks_Create(const char* name);
// Removes the stack of that name with its entries; nothing for an unknown name.
void Stacks_Delete(const char* name);
size_t Stacks_Count();
