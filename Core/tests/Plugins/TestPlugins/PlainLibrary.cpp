// A shared library that is no Qt plug-in at all.

extern "C" int plainLibraryAnswer()
{
    return 42;
}
