// Placeholder until the loopback link lands.
