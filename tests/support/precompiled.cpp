// Compiles the precompiled Qt headers the tests share; it holds nothing of its own.
