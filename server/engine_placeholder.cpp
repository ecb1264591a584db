// Placeholder until the stand-in server's core lands.
