// Placeholder until the stand-in server lands.
int main() { return 0; }
