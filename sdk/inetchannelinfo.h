// What the engine knows of a client's network channel. Bots have none.
#pragma once

enum { FLOW_OUTGOING = 0, FLOW_INCOMING = 1 };

class INetChannelInfo {
public:
  virtual const char* GetName() const = 0;
  virtual const char* GetAddress() const = 0;   // "ip:port"
  virtual float GetTimeConnected() const = 0;   // seconds
  virtual float GetAvgLatency(int flow) const = 0;  // seconds
  virtual float GetAvgLoss(int flow) const = 0;     // fraction 0..1
  virtual bool IsLoopback() const = 0;

protected:
  virtual ~INetChannelInfo() = default;
};
