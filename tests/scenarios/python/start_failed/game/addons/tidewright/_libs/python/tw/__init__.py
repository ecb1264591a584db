# A package that can't be imported: the server goes on without Python.
raise ImportError("this tw can't be imported")
