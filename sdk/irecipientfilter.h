// Who receives a user message or a sound: a list of entity indexes.
#pragma once

class IRecipientFilter {
public:
  virtual ~IRecipientFilter() = default;
  virtual bool IsReliable() const = 0;
  virtual bool IsInitMessage() const = 0;
  virtual int GetRecipientCount() const = 0;
  // Entity index of the recipient in `slot`, or -1.
  virtual int GetRecipientIndex(int slot) const = 0;
};
