// Every system service that Orvo uses, and the words that it has for them, handed down from main.cpp, which owns them
// all. Each class takes just the services it needs.
#pragma once

namespace orvo {

class Accessibility;
class Application;
class ApplicationIcons;
class Bundle;
class EventTaps;
class FileSystem;
class HotKeys;
class LocalizedText;
class LoginItem;
class MainQueue;
class Pasteboard;
class ProcessInfo;
class SerialExecutor;
class StatusBar;
class UserDefaults;
class Windows;
class Workspace;
struct Words;

struct Platform {
  MainQueue& mainQueue;
  SerialExecutor& scanExecutor;
  UserDefaults& userDefaults;
  Bundle& bundle;
  ProcessInfo& processInfo;
  FileSystem& fileSystem;
  Workspace& workspace;
  Accessibility& accessibility;
  EventTaps& eventTaps;
  HotKeys& hotKeys;
  LoginItem& loginItem;
  LocalizedText& localizedText;
  Application& application;
  StatusBar& statusBar;
  Windows& windows;
  Pasteboard& pasteboard;
  ApplicationIcons& applicationIcons;
  const Words& words;
};

}  // namespace orvo
