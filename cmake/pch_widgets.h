// Precompiled for every target with windows.
#pragma once
#include "pch_qt.h"
#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QPushButton>
#include <QWidget>
