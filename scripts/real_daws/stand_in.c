// A Windows program that uses files as a DAW does, controlled by commands on its standard input:
//
//   open PATH              opens a file for reading and keeps it open, like sessions and media
//   open-unread PATH       the same without reading from it: until a program reads, Wine gives it no
//                          descriptor of its own
//   close                  closes all open files
//   title TEXT             changes the title of its window
//   export PATTERN PATH     writes eight seconds of audio in one of the ways below
//
// It echoes each line on its standard output when it has carried it out. It counts as a DAW because
// the script gives its executable the name of one.
#include <stdio.h>
#include <string.h>
#include <windows.h>

enum { pathLength = 1024, mostFiles = 64, portions = 4, portionLength = 200000, pause = 3000 };

static HANDLE held[mostFiles];
static int heldCount;
static HWND window;
static unsigned char portion[portionLength];

static wchar_t* wide(const char* text)
{
    static wchar_t result[pathLength];
    MultiByteToWideChar(CP_UTF8, 0, text, -1, result, pathLength);
    return result;
}

static void hold(const char* path, int isRead)
{
    HANDLE file = CreateFileW(
        wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, NULL, OPEN_EXISTING, 0, NULL);
    DWORD count;
    if (file == INVALID_HANDLE_VALUE || heldCount == mostFiles)
        return;
    if (isRead)
        ReadFile(file, portion, 4, &count, NULL);
    held[heldCount++] = file;
}

static void closeAll(void)
{
    while (heldCount > 0)
        CloseHandle(held[--heldCount]);
}

static HANDLE opened(const char* path, DWORD how)
{
    return CreateFileW(
        wide(path), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, NULL, how, 0, NULL);
}

static void writeAt(HANDLE file, LONG offset, const void* bytes, DWORD length)
{
    DWORD count;
    SetFilePointer(file, offset, NULL, FILE_BEGIN);
    WriteFile(file, bytes, length, &count, NULL);
}

/// Each portion has different content, so that a copy with a missing portion is noticed.
static void writePortion(HANDLE file, int number)
{
    memset(portion, 'a' + number, portionLength);
    memcpy(portion, "RIFF", number == 0 ? 4 : 0);
    writeAt(file, number * portionLength, portion, portionLength);
}

static void writePortions(HANDLE file, DWORD milliseconds)
{
    for (int number = 0; number < portions; ++number) {
        writePortion(file, number);
        if (number < portions - 1)
            Sleep(milliseconds);
    }
}

static void reserve(HANDLE file)
{
    SetFilePointer(file, portions * portionLength, NULL, FILE_BEGIN);
    SetEndOfFile(file);
}

static void exportReopening(const char* path, DWORD milliseconds)
{
    for (int number = 0; number < portions; ++number) {
        HANDLE file = opened(path, number == 0 ? CREATE_ALWAYS : OPEN_EXISTING);
        writePortion(file, number);
        CloseHandle(file);
        if (number < portions - 1)
            Sleep(milliseconds);
    }
}

static void exportAs(const char* temporary, const char* path)
{
    wchar_t from[pathLength];
    HANDLE file = opened(temporary, CREATE_ALWAYS);
    writePortions(file, pause);
    CloseHandle(file);
    wcscpy(from, wide(temporary));
    MoveFileExW(from, wide(path), MOVEFILE_REPLACE_EXISTING);
}

static void exportTo(const char* pattern, const char* path)
{
    char temporary[pathLength + 8];
    HANDLE file;
    if (strcmp(pattern, "reopened") == 0 || strcmp(pattern, "reopened-fast") == 0) {
        exportReopening(path, strcmp(pattern, "reopened") == 0 ? pause : pause / 10);
        return;
    }
    if (strcmp(pattern, "renamed") == 0) {
        snprintf(temporary, sizeof temporary, "%s.tmp", path);
        exportAs(temporary, path);
        return;
    }
    if (strcmp(pattern, "renamed-audio") == 0) {
        snprintf(temporary, sizeof temporary, "%.*s-temp.wav", (int)strlen(path) - 4, path);
        exportAs(temporary, path);
        return;
    }
    file = opened(path, CREATE_ALWAYS);
    if (strcmp(pattern, "reserved") == 0) {
        reserve(file);
        Sleep(2 * pause);
    }
    writePortions(file, strcmp(pattern, "paused") == 0 ? pause : 0);
    if (strcmp(pattern, "held") == 0)
        Sleep(2 * pause);
    if (strcmp(pattern, "header-last") == 0) {
        writeAt(file, 0, "\0\0\0\0", 4);
        Sleep(2 * pause);
        writeAt(file, 0, "RIFF", 4);
    }
    CloseHandle(file);
}

static void obey(char* line)
{
    if (strncmp(line, "open ", 5) == 0)
        hold(line + 5, 1);
    else if (strncmp(line, "open-unread ", 12) == 0)
        hold(line + 12, 0);
    else if (strcmp(line, "close") == 0)
        closeAll();
    else if (strncmp(line, "title ", 6) == 0)
        SetWindowTextW(window, wide(line + 6));
    else if (strncmp(line, "export ", 7) == 0) {
        char pattern[32];
        int at = 0;
        if (sscanf(line + 7, "%31s %n", pattern, &at) == 1)
            exportTo(pattern, line + 7 + at);
    }
}

static DWORD WINAPI takeOrders(void* unused)
{
    char line[2 * pathLength];
    (void)unused;
    while (fgets(line, sizeof line, stdin)) {
        line[strcspn(line, "\r\n")] = '\0';
        obey(line);
        printf("%s\n", line);
        fflush(stdout);
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
    return 0;
}

int main(void)
{
    WNDCLASSW kind = { 0 };
    MSG message;
    kind.lpfnWndProc = DefWindowProcW;
    kind.lpszClassName = L"StandIn";
    RegisterClassW(&kind);
    window = CreateWindowW(L"StandIn", L"Stand-in", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400,
        200, NULL, NULL, NULL, NULL);
    CreateThread(NULL, 0, takeOrders, NULL, 0, NULL);
    while (GetMessageW(&message, NULL, 0, 0) > 0) {
        if (message.message == WM_CLOSE)
            break;
        DispatchMessageW(&message);
    }
    return 0;
}
