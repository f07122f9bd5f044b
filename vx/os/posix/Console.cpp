// The console of this system.
