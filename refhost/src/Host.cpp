// Placeholder until the host lands.
