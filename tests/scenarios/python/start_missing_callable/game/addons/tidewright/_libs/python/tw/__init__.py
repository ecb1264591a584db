# A package whose addons object lacks tick: the server goes on without Python.
class _Addons:
    def triggerEvent(self, name): pass
    def callBlock(self, name): pass
    def hasEvent(self, name): return 0
    def sayFilter(self, userid, text, teamonly): return 1
    def clientCommand(self, userid): return 1

addons = _Addons()
def loadModuleAddon(name): return 0
def unloadModuleAddon(name): pass
def printScriptList(): pass
