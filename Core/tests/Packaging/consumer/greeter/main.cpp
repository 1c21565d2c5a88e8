#include <StartUp/FrameworkRunner.h>

int main(int argc, char** argv)
{
    return corvane::base::business::FrameworkRunner().exec(argc, argv, false);
}
