#include "core/appiApplication.h"

#include "core/StringFunctions.h"
#include "core/platform/piSystem.h"

#include <bit>
#include <string>
#include <utility>

namespace {
appiApplication* currentApplication = nullptr;

void replaceCopy(char*& field, const char* value) {
    delete[] field;
    field = mem_strdup(value);
}
} // namespace

appiApplication::appiApplication()
    : m_platformClass(piWindowsPlatformClass(piSystem::current().osVersion())) {
    currentApplication = this;
    init();
}

appiApplication::~appiApplication() {
    releaseStrings();
    if (currentApplication == this)
        currentApplication = nullptr;
}

appiApplication* appiApplication::current() {
    return currentApplication;
}

void appiApplication::setCurrent(appiApplication* application) {
    currentApplication = application;
}

void appiApplication::releaseStrings() {
    for (char** field :
         {&m_iniFile, &m_appDirEnvVar, &m_homeSubdirectory, &m_helpFile, &m_featureRevString}) {
        delete[] * field;
        *field = nullptr;
    }
}

void appiApplication::init() {
    releaseStrings();
    m_newEnabled = 1;
    m_openEnabled = 1;
    m_saveEnabled = 0;
    m_printRestricted = 1;
    m_exportRestricted = 1;
    m_showAboutEnabled = 0;
    m_protectionEnabled = 0;
    m_epsEnabled = 0;
    m_mifEnabled = 0;
    m_windowsShown = 1;
    m_windowSystemRunning = 0;
    m_requiresThreads = 0;
    m_disableThreads = 0;
    m_useHTMLhelp = 0;
}

const char* appiApplication::appDirEnvVarVal() const {
    const piSystem& system = piSystem::current();
    if (const char* value = system.environment(m_appDirEnvVar))
        return value;
    const char* makerHome = system.environment("VOLSA_HOME");
    if (!makerHome)
        return nullptr;
    return TqObject::copyToNextStaticBuffer(std::string(makerHome) + "/" +
                                            (m_homeSubdirectory ? m_homeSubdirectory : ""));
}

const char* appiApplication::programDirectory(bool ignoreEnvironment) const {
    const piSystem& system = piSystem::current();
    const char separator = system.pathSeparator();
    const char* fromEnvironment = ignoreEnvironment ? nullptr : appDirEnvVarVal();
    const std::string directory = fromEnvironment && *fromEnvironment
                                      ? std::string(fromEnvironment)
                                      : piProgramDirectoryOf(system.executablePath(), separator);
    return TqObject::copyToNextStaticBuffer(piNativeSeparators(directory, separator));
}

const char* appiApplication::subdirectory(bool ignoreEnvironment, const char* name) const {
    const char separator = piSystem::current().pathSeparator();
    const std::string directory =
        std::string(programDirectory(ignoreEnvironment)) + separator + name + separator;
    return TqObject::copyToNextStaticBuffer(directory);
}

const char* appiApplication::executableDirectory(bool ignoreEnvironment) const {
    return subdirectory(ignoreEnvironment, "bin");
}

const char* appiApplication::libDirectory(bool ignoreEnvironment) const {
    return subdirectory(ignoreEnvironment, "lib");
}

const char* appiApplication::dynLibDirectory(bool ignoreEnvironment) const {
    return subdirectory(ignoreEnvironment, "bin");
}

const char* appiApplication::helpDirectory(bool ignoreEnvironment) const {
    return subdirectory(ignoreEnvironment, "help");
}

const char* appiApplication::quickviewDirectory(bool ignoreEnvironment) const {
    return subdirectory(ignoreEnvironment, "quickview");
}

QString appiApplication::iniPath() const {
    const piSystem& system = piSystem::current();
    return QString::fromStdString(system.iniDirectory()) +
           QChar::fromLatin1(system.pathSeparator()) +
           QString::fromUtf8(m_iniFile ? m_iniFile : "");
}

char appiApplication::setNewEnabled(char enabled) {
    return std::exchange(m_newEnabled, enabled);
}

char appiApplication::setOpenEnabled(char enabled) {
    return std::exchange(m_openEnabled, enabled);
}

char appiApplication::setSaveEnabled(char enabled) {
    return std::exchange(m_saveEnabled, enabled);
}

char appiApplication::setSaveAsEnabled(char enabled) {
    return std::exchange(m_saveAsEnabled, enabled);
}

bool appiApplication::isLittleEndian() {
    return std::endian::native == std::endian::little;
}

void appiApplication::setIniFile(const char* name) {
    replaceCopy(m_iniFile, name);
}

void appiApplication::setHelpFile(const char* name) {
    replaceCopy(m_helpFile, name);
}

void appiApplication::setAppFeatureRevString(const char* text) {
    replaceCopy(m_featureRevString, text);
}

void appiApplication::setAppDirEnvVar(const char* name) {
    replaceCopy(m_appDirEnvVar, name);
}

void appiApplication::setHomeSubdirectory(const char* name) {
    replaceCopy(m_homeSubdirectory, name);
}
