// The whole application: the framework reads corvane-demo.xml (or the file after -C) and
// corvane-demo.properties beside this executable and runs the plug-ins named there.

#include <StartUp/FrameworkRunner.h>

int main(int argc, char** argv)
{
    return corvane::base::business::FrameworkRunner().exec(argc, argv, false);
}
