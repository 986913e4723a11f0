// Makes the precompiled header of the tests.
