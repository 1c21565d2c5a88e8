// A user's application built against the installed library: it must compile from the
// installed headers alone and link and run against the installed library.

#include <Exceptions/Exceptions.h>
#include <Interfaces/ILoggingManager.h>
#include <StartUp/ManagerRegistry.h>

#include <cstdio>
#include <cstring>

#ifndef QT_MESSAGELOGCONTEXT
#error "Corvane::Core must pass QT_MESSAGELOGCONTEXT on to its users"
#endif

int main()
{
    using corvane::base::business::ManagerRegistry;
    try {
        ManagerRegistry::instance()->getLoggingManager();
    } catch (const corvane::base::exceptions::ManagerRegistryException& e) {
        std::puts(e.what());
        return std::strcmp(e.what(),
                           "corvane::base::business::ManagerRegistry::getLoggingManager "
                           "loggingManager not registered!")
                == 0
            ? 0
            : 1;
    }
    return 2;
}
