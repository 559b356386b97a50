/// Preloaded into the terminal program: makes one of its calls that touch files fail.
