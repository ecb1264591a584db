// The game's published table of networked properties: server classes, send tables, send properties.
#pragma once

class SendTable;

// Fixed to int: a game may publish numbers past the last type, and readers must be able to hold them.
enum SendPropType : int {
  DPT_Int = 0,
  DPT_Float = 1,
  DPT_Vector = 2,
  DPT_String = 3,
  DPT_Array = 4,
  DPT_DataTable = 5,
  DPT_NUMSendPropTypes
};

class SendProp {
public:
  SendPropType m_Type = DPT_Int;
  const char* m_pVarName = nullptr;
  SendTable* m_pDataTable = nullptr;  // for DPT_DataTable
  int m_Offset = 0;                   // bytes, relative to the enclosing table
  int m_nElements = 1;                // for DPT_Array

  SendPropType GetType() const { return m_Type; }
  const char* GetName() const { return m_pVarName; }
  SendTable* GetDataTable() const { return m_pDataTable; }
  int GetOffset() const { return m_Offset; }
};

class SendTable {
public:
  SendProp* m_pProps = nullptr;
  int m_nProps = 0;
  const char* m_pNetTableName = "";

  int GetNumProps() const { return m_nProps; }
  SendProp* GetProp(int i) { return &m_pProps[i]; }
  const char* GetName() const { return m_pNetTableName; }
};

class ServerClass {
public:
  const char* m_pNetworkName = nullptr;
  SendTable* m_pTable = nullptr;
  ServerClass* m_pNext = nullptr;
  int m_ClassID = 0;
  int m_InstanceBaselineIndex = -1;

  const char* GetName() const { return m_pNetworkName; }
};
