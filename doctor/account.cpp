#include "doctor/account.h"

#include <cerrno>

namespace doctor {

namespace {

std::string systemFolder(const Account& account) {
    const std::string* folder = variable(account, "ODBCSYSINI");
    return folder != nullptr ? *folder : account.systemFolder;
}

}  // namespace

const std::string* variable(const Account& account, const std::string& name) {
    const auto found = account.variables.find(name);
    return found == account.variables.end() ? nullptr : &found->second;
}

std::string userFile(const Account& account) {
    const std::string* file = variable(account, "ODBCINI");
    return file != nullptr && !file->empty() ? *file : account.home + "/.odbc.ini";
}

std::string systemFile(const Account& account) {
    return systemFolder(account) + "/odbc.ini";
}

std::string driverFile(const Account& account) {
    const std::string* name = variable(account, "ODBCINSTINI");
    return systemFolder(account) + "/" + (name != nullptr ? *name : "odbcinst.ini");
}

std::string userDriverFile(const Account& account) {
    const std::string* home = variable(account, "HOME");
    return (home != nullptr ? *home : "/home") + "/.odbcinst.ini";
}

const ConfigFile* findFile(const Account& account, const std::string& path) {
    const auto found = account.files.find(path);
    return found == account.files.end() || found->second.error == ENOENT ? nullptr : &found->second;
}

}  // namespace doctor
