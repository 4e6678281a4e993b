// The numbers of every text that the product shows or records. The texts stand in catalogs/<locale>/*.msg under the
// same numbers, always in set 1; the numbers are a contract with translated catalogs and never change meaning.
#pragma once

#include <cstdint>

// "odbc.m": what the administrator and the shared dialogs show.
namespace Message {
enum Number : std::uint32_t {
    // Shared dialogs, and the About form of setup dialogs.
    kCompanyAddressLine1 = 7300,
    kCompanyAddressLine2 = 7301,
    kSetupErrorTitle = 7308,
    kSetupErrorOk = 7309,
    kOutOfMemory = 7312,
    kPermissionDeniedWrite = 7315,
    kPermissionDeniedRead = 7316,

    // Main window.
    kWindowTitle = 9002,
    kApply = 9058,
    kHelp = 9059,
    kOk = 9060,
    kCancel = 9061,
    kDialogTitle = 9030,
    kAnswerYes = 9053,
    kAnswerNo = 9054,
    kDataSourceFileUnreadable = 9092,
    kDriverFileUnreadable = 9093,
    kChangeFailed = 9108,
    kChangeBadLine = 9109,
    kChangeRefused = 9110,
    kChangeLineTooLong = 9111,
    kChangeBusy = 9112,
    kChangeLeftHalf = 9113,

    // Headers above the columns of every page.
    kColumnName = 9063,
    kColumnDriver = 9064,
    kColumnVersion = 9046,
    kColumnCompany = 9065,
    kColumnFile = 9066,
    kColumnDate = 9067,

    // User DSN page.
    kUserDsnTab = 9023,
    kUserDsnHeading = 9000,
    kUserDsnExplanation = 9024,
    kAdd = 9006,
    kRemove = 9022,
    kConfigure = 9031,
    kConfigureSelectOne = 9020,
    kRemoveSelectOne = 9041,
    kRemoveQuestionBegin = 9016,
    kRemoveQuestionEnd = 9015,
    kRemoveFailed = 9021,
    kNamesDifferInCase = 9099,

    // Calling a driver's setup library.
    kSetupFailed = 9078,
    kNoConfigFileDsn = 9079,
    kSetupLibraryNotLoaded = 9080,
    kNoConfigDsn = 9098,

    kSetupAdvice = 9120,

    // The command odbcadmin-register.
    kRegisterUsage = 9121,
    kRegisterForUser = 9122,
    kRegisterNothing = 9123,
    kRegisterLacking = 9124,
    kRegisterHasSetup = 9125,
    kRegisterDone = 9126,
    kRegisterNew = 9127,
    kRegisterUnknown = 9128,

    // File DSN page.
    kFileDsnTab = 9039,
    kFileDsnExplanation = 9062,
    kFileDsnAdd = 9009,
    kFileDsnRemove = 9010,
    kFileDsnConfigure = 9040,
    kSetDirectory = 9038,
    kFileSelection = 9008,
    kFileList = 9034,
    kDirectoryList = 9094,
    kFileRemoveFailed = 9007,
    kSetDirectoryQuestion = 9047,
    kFileConfigureSelectOne = 9050,
    kChooseFileTitle = 9082,
    kOverwriteQuestion = 9083,
    kDirectoryNotWritable = 9084,
    kOverwriteFailed = 9096,
    kFileNameTooLong = 9085,
    kFileDsnUnreadable = 9055,
    kNoFileDsns = 9056,
    kFileIncomplete = 9037,
    kFileNamesNoDriver = 9106,
    kFileDriverUnknown = 9107,

    // Driver chooser and File DSN wizard.
    kChooserTitle = 9025,
    kChooserHeading = 9043,
    kAdvanced = 9044,
    kChooserAdvancedHint = 9045,
    kChooserSelectOne = 9027,
    kFileNameHeading = 9048,
    kSummaryHeading = 9049,
    kAdvancedTitle = 9051,
    kAdvancedHeading = 9052,
    kTestResultTitle = 9057,
    kVerifyConnection = 9068,
    kNext = 9076,
    kBack = 9077,
    kFinish = 9081,
    kDriverHasNoSetup = 9086,
    kFileNameMissingTitle = 9087,
    kFileNameMissing = 9088,
    kSummaryAttributes = 9089,
    kSummaryFileName = 9090,
    kTestSucceeded = 9091,
    kConnectionStringTooLong = 9103,
    kAttributesCut = 9104,
    kFileNameHasSemicolon = 9105,

    // Drivers page.
    kDriversTab = 9003,
    kDriversHeading = 9011,
    kDriversExplanation = 9012,
    kDriverListCut = 9100,

    // Tracing page.
    kTracingTab = 9004,
    kBrowse = 9017,
    kChooseTraceLibraryTitle = 9018,
    kChooseTraceFileTitle = 9019,
    kEnableTracing = 9028,
    kTraceFile = 9032,
    kTraceLibrary = 9033,
    kTracingExplanation = 9042,
    kFilter = 9095,
    kTraceNotSaved = 9097,
    kTraceTextTooLong = 9101,
    kTraceTextHasLineBreak = 9102,

    // About page.
    kAboutTab = 9005,
    kAboutHeading = 9069,
    kColumnDescription = 9070,
    kAboutExplanation = 9071,
    kAboutAdministrator = 9072,
    kAboutCursorLibrary = 9073,
    kAboutConversionLibrary = 9074,
    kAboutDriverManager = 9075,
};
}  // namespace Message

// "vhutl23.mo": the errors that the support library records.
namespace LibraryMessage {
enum Number : std::uint16_t {
    kNoMemory = 1503,
    kNoSpace = 1506,
    kBadDescriptor = 1507,
    kAccessDenied = 1508,
    kFileNotFound = 1509,
    kFileBusy = 1512,
    kNoLocks = 1514,
    kNotPermitted = 1519,
    kFileExists = 1520,
    kLockDeadlock = 1521,
    kLockRefused = 1522,
    kLibraryNotLoadable = 1523,
    kHelpCaption = 1525,
    kHelpRootMissing = 1526,
    kStringNotOwned = 2716,
    // The shared dialogs record their out-of-memory text under the number it has in "odbc.m".
    kConfigurationAbandoned = Message::kOutOfMemory,
    kReadOnlyFile = 30040,
    kFileError = 30041,
    kTooManyFiles = 30045,
    kReadOnlyFileSystem = 30049,
    kSystemErrorFormat = 30050,
    kMemoryError = 30190,
};
}  // namespace LibraryMessage

// "vhsetup23.mo": what our driver setup library shows. "%1" in a text stands for what it is about.
namespace SetupMessage {
enum Number : std::uint32_t {
    // The dialog.
    kTitle = 1,
    kDataSourceName = 2,
    kDescription = 3,
    kDatabase = 4,
    kServer = 5,
    kPort = 6,
    kUser = 7,
    kPassword = 8,
    kFurtherSettings = 9,
    kFurtherSettingsHint = 10,
    kDriverDefault = 11,
    kOverwriteQuestion = 12,
    kDefaultHint = 13,
    kSavePassword = 14,
    kSavePasswordHint = 15,
    kTest = 16,
    kAbout = 17,
    kChooseFileTitle = 18,
    kFileName = 19,

    // What is wrong with a data source or one of its settings.
    kNameMissing = 20,
    kNameInvalid = 21,
    kNameReserved = 22,
    kKeyInvalid = 23,
    kKeyHasField = 24,
    kKeyTwice = 25,
    kNotKeyAndValue = 26,
    kValueHasLineBreak = 27,
    kValueTooLong = 28,
    kPasswordBlanks = 29,
    kFileNameInvalid = 30,

    // Why a request could not be carried out.
    kUnknownRequest = 40,
    kUnknownDriver = 41,
    kBadAttributes = 42,
    kNoSuchDataSource = 43,
    kWriteFailed = 44,
    kRemoveFailed = 45,
    kAlreadyOpen = 46,
    kNoMemory = 47,
    kNoSuchFile = 48,
    kFileNotWritten = 49,

    // What was given and can't be stored.
    kLeftOut = 51,

    // The connection test.
    kTestSucceeded = 60,
    kTestFailed = 61,
    kTestFailedSilently = 62,
    kTestTitle = 63,
    kTestServer = 64,
    kTestCrashed = 65,
    kDriverPrinted = 66,
    kConnecting = 67,
    kConnectingOn = 68,
    kWaitOn = 69,
    kNoAnswer = 80,
    kDriverNotInstalled = 81,
    kDriverPackage = 82,
    kOtherDriver = 83,

    // The tabs of a dialog with many settings.
    kTabGeneral = 90,
    kTabSecurity = 91,
    kTabAdvanced = 92,

    // The About form.
    kAboutTitle = 70,
    kAboutFile = 71,
    kAboutVersion = 72,
    kAboutCompany = 73,
    kAboutDate = 74,
    kAboutSize = 75,
};
}  // namespace SetupMessage
