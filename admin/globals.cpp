#include "admin/globals.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "components/component.h"
#include "kvlib/catalog.h"

XtAppContext app_context = nullptr;
Display* display = nullptr;
Widget ShODBCAdmin = nullptr;
Widget BtnApply = nullptr;
unsigned char CurrentSelectedTab = 'U';
Widget Fdialog = nullptr;
char* CurrentDriver = nullptr;
char* FileDSNName = nullptr;
const char* DsnInfo = nullptr;
char* DsnInfoText = nullptr;
bool IsAdvOptSet = false;
bool IsVerificationNeeded = true;
bool IsEntriesmodified = false;
short DsnType = kUserDataSource;
KvString TempStr;

namespace {

void destroyWidget(Widget& widget) {
    if (widget != nullptr) {
        XtDestroyWidget(widget);
        widget = nullptr;
    }
}

void freeText(char*& text) {
    std::free(text);
    text = nullptr;
}

}  // namespace

void replaceText(char*& string, const char* text) {
    char* copy = strdup(text);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::free(string);
    string = copy;
}

void freeGlobals() {
    destroyWidget(Mdialog);
    destroyWidget(Fdialog);
    freeText(CurrentDriver);
    freeText(FileDSNName);
    freeText(DsnInfoText);
    DsnInfo = nullptr;
    if (Rfile != nullptr) {
        CloseStrings(Rfile);
        // A report that is shown from here on finds no catalog and shows numbers, instead of reading freed memory.
        Rfile = invalidCatalog();
    }
}

void endProgram(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    freeGlobals();
    std::exit(EXIT_SUCCESS);
}

const char* getFileVersionString() {
    static const std::string text = std::string(kProductVersion) + kAdministratorBuild;
    return text.c_str();
}

const char16_t* getFileVersionStringW() {
    // Version texts are ASCII, so each byte is a unit.
    static const std::string_view text = getFileVersionString();
    static const std::u16string wide(text.begin(), text.end());
    return wide.c_str();
}

const char* getCompanyNameString() {
    return kCompany;
}
