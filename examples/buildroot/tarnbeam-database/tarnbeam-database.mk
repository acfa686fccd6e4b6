################################################################################
#
# tarnbeam-database
#
################################################################################

TARNBEAM_DATABASE_VERSION = 1.0.0
TARNBEAM_DATABASE_SITE = $(call qstrip,$(BR2_PACKAGE_TARNBEAM_DATABASE_SOURCE))
TARNBEAM_DATABASE_SITE_METHOD = local
# No licence was chosen by the owner yet: all rights are theirs.
TARNBEAM_DATABASE_LICENSE = PROPRIETARY
TARNBEAM_DATABASE_REDISTRIBUTE = NO
TARNBEAM_DATABASE_INSTALL_STAGING = YES
TARNBEAM_DATABASE_DEPENDENCIES = qt5base sqlite
TARNBEAM_DATABASE_CONF_OPTS = \
	-DTARNBEAM_BUILD_TESTS=OFF \
	-DTARNBEAM_BUILD_TOOL=$(if $(BR2_PACKAGE_TARNBEAM_DATABASE_TOOL),ON,OFF)
# The program draws lines on the globe.
ifeq ($(BR2_PACKAGE_TARNBEAM_DATABASE_TOOL),y)
TARNBEAM_DATABASE_DEPENDENCIES += geographiclib host-pkgconf
endif

# Conversions work in this folder; whoever converts is a member of the group.
define TARNBEAM_DATABASE_PERMISSIONS
	/opt/tarnbeam/database d 2775 0 tarnbeam - - - - -
endef

define TARNBEAM_DATABASE_USERS
	- - tarnbeam -1 - - - - Antenna-alignment databases
endef

define TARNBEAM_DATABASE_MAKE_SCRATCH_FOLDER
	$(INSTALL) -d $(TARGET_DIR)/opt/tarnbeam/database
endef
TARNBEAM_DATABASE_POST_INSTALL_TARGET_HOOKS += TARNBEAM_DATABASE_MAKE_SCRATCH_FOLDER

$(eval $(cmake-package))
