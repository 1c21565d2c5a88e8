# What the development package adds to the library's own installation: the configuration
# file's schema. Both Qt majors install side by side, so the folder carries the major's suffix.
set(CORVANE_DATA_INSTALL_DIR ${CMAKE_INSTALL_DATADIR}/CorvaneCore${CORVANE_SUFFIX})
install(FILES ${PROJECT_SOURCE_DIR}/schema/corvane-configuration.xsd
    DESTINATION ${CORVANE_DATA_INSTALL_DIR} COMPONENT development)
