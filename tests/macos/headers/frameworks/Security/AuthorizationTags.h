// The names of what a password dialog would ask for, for checks on hosts without Authorization Services.
#pragma once

#define kAuthorizationEnvironmentUsername "username"
#define kAuthorizationEnvironmentPassword "password"
